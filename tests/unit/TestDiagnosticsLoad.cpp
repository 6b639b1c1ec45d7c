// Everything at once, with real files: trace is switched all the time while it is written, both logs rotate, captures
// are taken, and the folder of the trace cannot be written to now and then.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <tessel/EventLog.h>
#include <tessel/FFDC.h>
#include <tessel/Logger.h>
#include <tessel/NYXException.h>
#include <tessel/RAS.h>
#include <tessel/RasDescriptor.h>
#include <tessel/Trace.h>

#include "support/CapturedOutput.h"
#include "support/Diagnostics.h"

namespace tessel {
namespace {

using test::Diagnostics;
using Texts = std::vector<std::string>;

constexpr int kSwitches = 2000;
constexpr int kTracers = 8;
constexpr int kCaptures = 300;

// Threads that repeat their work until the object ends.
class Busy {
 public:
  ~Busy() {
    stop_ = true;
    for (std::thread& thread : threads_) thread.join();
  }

  void add(const std::function<void()>& work) {
    threads_.emplace_back([this, work] {
      while (!stop_) work();
    });
  }

 private:
  std::atomic<bool> stop_{false};
  std::vector<std::thread> threads_;
};

class TracedClass {
 public:
  void run(int depth) const {
    if (rd_.isFlowOn()) Trace::entry(rd_, this, "run", std::to_string(depth));
    if (rd_.isOn(TraceLevel::VERBOSE)) Trace::data(rd_, TraceLevel::VERBOSE, this, "run", std::string("data"));
    if (depth > 0) run(depth - 1);
    if (rd_.isFlowOn()) Trace::exit(rd_, this, "run", "value", "string");
  }

 private:
  const RasDescriptor rd_{"LoadClass", "com.kelvo.tessel.nativ.common.KTBNVMessages"};
};

// A folder in the place of a generation: no rotation gets past it.
void blockRotation(const Diagnostics& diagnostics) {
  std::error_code ignored;
  std::filesystem::remove(diagnostics.traceFile(1), ignored);
  std::filesystem::create_directory(diagnostics.traceFile(1), ignored);
  std::ofstream(diagnostics.traceFile(1) / "file") << "in the way";
  std::this_thread::yield();
  std::filesystem::remove_all(diagnostics.traceFile(1), ignored);
}

void switchTrace() {
  for (int i = 0; i < kSwitches; ++i) {
    RAS::setLevel(i % 2 == 0 ? "LoadClass=ALL" : "=FLOW");
    if (i % 5 == 0) RAS::setLevel("+EventLogHandler,SecureFileHandler,FFDC,NYXUtils");
    if (i % 7 == 0) RAS::setLevel("");
  }
}

void runEverything(const Diagnostics& diagnostics) {
  const TracedClass traced;
  const RasDescriptor rd("LoadEvents", "");
  std::atomic<int> captures{0};
  Busy busy;
  for (int i = 0; i < kTracers; ++i) busy.add([&traced] { traced.run(3); });
  busy.add([&rd] { EventLog::infoNoFormat(rd, "text of an event"); });
  busy.add([&rd, &captures] {
    const NYXException failure("captured");
    if (captures < kCaptures) FFDC::capture(rd, "run", FFDC::PROBE_001(), &failure);
    ++captures;
  });
  busy.add([&diagnostics] { blockRotation(diagnostics); });
  switchTrace();
}

// Every line of the file ends as a Windows line does and begins as a trace line, an event line or a banner.
void expectWholeLines(const std::filesystem::path& path, const std::regex& layout) {
  const std::string bytes = test::bytesOf(path);
  ASSERT_FALSE(bytes.empty()) << path;
  ASSERT_EQ("\r\n", bytes.substr(bytes.size() - 2)) << path;
  for (const std::string& line : test::windowsLines(bytes)) {
    ASSERT_TRUE(std::regex_match(line, layout)) << path << ": " << line;
  }
}

const std::regex kTraceLine(
    R"(\d\d:\d\d:\d\d\.\d{3}\.[0-9A-F]{2}  [0-9a-f]{16} (@[0-9a-f]{16}|           static) \.\w+ +[-+*{}d!].*)");
const std::regex kEventLine(R"(\[\d\d/\d\d/\d{4} \d\d:\d\d:\d\d\.\d{3} [^\]]+\]  [0-9a-f]{16} \w+ +[CIWE] .*)");

TEST(DiagnosticsLoad, NoLineIsTornAndNothingHangsWhileEverythingChanges) {
  test::DiagnosticsOptions options;
  options.limit = 150;  // reached by two events
  options.count = 4;
  const Diagnostics diagnostics(options);
  {
    test::CapturedOutput error(test::CapturedOutput::error);
    runEverything(diagnostics);
  }
  std::filesystem::remove_all(diagnostics.traceFile(1));
  RAS::setLevel("LoadClass=ALL");
  TracedClass().run(0);
  for (int i = 0; i < 3; ++i) {
    if (std::filesystem::is_regular_file(diagnostics.traceFile(i))) {
      expectWholeLines(diagnostics.traceFile(i), kTraceLine);
    }
  }
  for (int i = 0; i < 4; ++i) expectWholeLines(diagnostics.eventFile(i), kEventLine);
  const auto captures = Diagnostics::captures();
  EXPECT_FALSE(captures.empty());
  for (const Texts& capture : captures) EXPECT_EQ("[EOF]", capture.back());
}

// The last lines of all are complete and in order, whatever was switched before.
TEST(DiagnosticsLoad, TraceComesThroughAgainAfterAllTheSwitching) {
  const Diagnostics diagnostics;
  {
    const TracedClass traced;
    Busy busy;
    for (int i = 0; i < kTracers; ++i) busy.add([&traced] { traced.run(3); });
    for (int i = 0; i < 200; ++i) RAS::setLevel(i % 2 == 0 ? "LoadClass=ALL" : "");
  }
  RAS::setLevel("LoadClass=ALL");
  const std::size_t before = diagnostics.traceLines().size();
  TracedClass().run(1);
  EXPECT_EQ(before + 6, diagnostics.traceLines().size());
}

// Initialised and taken down again and again while others trace, log and capture.
TEST(DiagnosticsLoad, InitializeAndShutdownWhileEverythingIsUsed) {
  test::logDirectory();
  const test::TempFolder folder;
  const LogFileProperties events((folder.path() / "event%g.log").string(), 1000, 2, true, false);
  const LogFileProperties trace((folder.path() / "trace%g.log").string(), 1000, 2, true, false);
  test::CapturedOutput error(test::CapturedOutput::error);
  {
    const TracedClass traced;
    const RasDescriptor rd("LoadEvents", "");
    Busy busy;
    for (int i = 0; i < kTracers; ++i) busy.add([&traced] { traced.run(2); });
    busy.add([&rd] { EventLog::infoNoFormat(rd, "text of an event"); });
    busy.add([&rd] {
      FFDC::capture(rd, "run", FFDC::PROBE_001(), nullptr);
      std::filesystem::remove_all(Diagnostics::captureFolder());
    });
    for (int i = 0; i < 100; ++i) {
      RAS::initialize(RASEnvironment::DAEMON, events, trace, i % 2 == 0 ? "p.q" : "");
      RAS::setLevel("=ALL");
      RAS::shutdown();
    }
  }
  EXPECT_EQ("", RAS::getLogPath());
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "event0.log.lck"));
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "event0.log.1"));
  std::filesystem::remove_all(Diagnostics::captureFolder());
}

}  // namespace
}  // namespace tessel
