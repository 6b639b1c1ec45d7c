// Everything at once, with real files: trace is switched all the time while it is written, both logs rotate, captures
// are taken, and the folder of the trace cannot be written to now and then.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
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
#include "support/Thrown.h"

namespace tessel {
namespace {

using test::Diagnostics;
using Texts = std::vector<std::string>;

constexpr int kSwitches = 1000;
constexpr int kTracers = 8;
constexpr int kCaptures = 300;
constexpr int kRestarts = 100;
// On a machine that has other things to do the locks pass from thread to thread slowly.
constexpr std::chrono::seconds kLongest{8};
constexpr std::chrono::seconds kLoad{10};

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

// Calls with the number of the round until all rounds are over or it takes too long.
void repeat(int rounds, const std::function<void(int)>& work) {
  const auto end = std::chrono::steady_clock::now() + kLongest;
  for (int i = 0; i < rounds && std::chrono::steady_clock::now() < end; ++i) work(i);
}

// As often as the locks allow.
void switchTrace() {
  const auto end = std::chrono::steady_clock::now() + kLoad;
  for (int i = 0; std::chrono::steady_clock::now() < end; ++i) {
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

// Every line of the file, apart from a banner at its top, ends as a Windows line does and has the layout.
void expectWholeLines(const std::filesystem::path& path, const std::string& banner, std::ptrdiff_t bannerLines,
                      const std::regex& layout) {
  const std::string bytes = test::bytesOf(path);
  if (bytes.empty()) return;  // the load ended before there was such a generation
  ASSERT_EQ("\r\n", bytes.substr(bytes.size() - 2)) << path;
  Texts lines = test::windowsLines(bytes);
  if (lines[0].compare(0, banner.size(), banner) == 0) lines.erase(lines.begin(), lines.begin() + bannerLines);
  for (const std::string& line : lines) ASSERT_TRUE(std::regex_match(line, layout)) << path << ": " << line;
}

const std::regex kTraceLine(
    R"(\d\d:\d\d:\d\d\.\d{3}\.[0-9A-F]{2}  [0-9a-f]{16} (@[0-9a-f]{16}|           static) \.\w+ +[-+*{}d!].*)");
const std::regex kEventLine(R"(\[\d\d/\d\d/\d{4} \d\d:\d\d:\d\d\.\d{3} [^\]]+\]  [0-9a-f]{16} \w+ +[CIWE] .*)");

TEST(DiagnosticsLoad, NoLineIsTornAndNothingHangsWhileEverythingChanges) {
  test::DiagnosticsOptions options;
  options.eventLimit = 150;  // reached by two events
  options.traceLimit = 10000;
  options.count = 4;
  const Diagnostics diagnostics(options);
  {
    test::CapturedOutput error(test::CapturedOutput::error);
    runEverything(diagnostics);
  }
  // What blocked a rotation may itself have become an older generation.
  for (int i = 1; i < options.count; ++i) {
    const std::filesystem::path path = diagnostics.traceFile(i);
    if (std::filesystem::is_directory(path)) std::filesystem::remove_all(path);
  }
  RAS::setLevel("LoadClass=ALL");
  TracedClass().run(0);
  EXPECT_FALSE(test::bytesOf(diagnostics.traceFile()).empty());
  EXPECT_FALSE(test::bytesOf(diagnostics.eventFile()).empty());
  for (int i = 0; i < options.count; ++i) {
    expectWholeLines(diagnostics.traceFile(i), test::shownElement("KTBNV_DATE", ""), 9, kTraceLine);
    expectWholeLines(diagnostics.eventFile(i), test::shownElement("KTBNV_START_LOG_BANNER1"), 5, kEventLine);
  }
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
    repeat(kSwitches, [](int i) { RAS::setLevel(i % 2 == 0 ? "LoadClass=ALL" : ""); });
  }
  RAS::setLevel("LoadClass=ALL");
  const std::size_t before = diagnostics.traceLines().size();
  TracedClass().run(1);
  EXPECT_EQ(before + 6, diagnostics.traceLines().size());
}

// Initialised, set up anew and taken down again and again while others trace, log and capture.
TEST(DiagnosticsLoad, InitializeAndShutdownWhileEverythingIsUsed) {
  test::logDirectory();
  const test::TempFolder folder;
  const LogFileProperties events((folder.path() / "event%g.log").string(), 1000, 2, true, false);
  const LogFileProperties trace((folder.path() / "trace%g.log").string(), 1000, 2, true, false);
  test::CapturedOutput output(test::CapturedOutput::output);
  test::CapturedOutput error(test::CapturedOutput::error);
  {
    const TracedClass traced;
    const RasDescriptor rd("LoadEvents", "");
    Busy busy;
    for (int i = 0; i < kTracers; ++i) busy.add([&traced] { traced.run(2); });
    busy.add([&rd] { EventLog::infoNoFormat(rd, "text of an event"); });
    busy.add([&rd] {
      FFDC::capture(rd, "run", FFDC::PROBE_001(), nullptr);
      std::error_code ignored;  // a capture of another thread may be in the making
      std::filesystem::remove_all(Diagnostics::captureFolder(), ignored);
    });
    repeat(kRestarts, [&](int i) {
      RAS::initialize(RASEnvironment::DAEMON, events, trace, i % 2 == 0 ? "p.q" : "");
      RAS::setLevel("=ALL");
      RAS::initialize(RASEnvironment::UNITTEST, events, trace, "");
      RAS::shutdown();
    });
  }
  EXPECT_EQ("", RAS::getLogPath());
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "event0.log.lck"));
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "event0.log.1"));
  std::filesystem::remove_all(Diagnostics::captureFolder());
}

}  // namespace
}  // namespace tessel
