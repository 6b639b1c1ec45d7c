// Everything that the diagnostics can do, from eight threads at once, with the catalogue texts against them and the
// monitors of the platform.
#include <gtest/gtest.h>
#include <io.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <deque>
#include <string>

#include <tessel/ConsoleLogHandler.h>
#include <tessel/EventLog.h>
#include <tessel/FFDC.h>
#include <tessel/IPCMessage.h>
#include <tessel/LogRecord.h>
#include <tessel/Logger.h>
#include <tessel/NLS.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>
#include <tessel/RAS.h>
#include <tessel/RasDescriptor.h>
#include <tessel/Trace.h>

#include "support/FreshProcess.h"
#include "support/TempProduct.h"
#include "support/Watchdog.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

using namespace std::chrono_literals;

constexpr auto kDuration = 10s;
constexpr auto kLimit = 120s;
constexpr const char* kMessages = "com.kelvo.tessel.nativ.common.KTBNVMessages";

// Too many placeholders and too few, also in the texts that a report of that goes through.
constexpr const char* kWrongMessages =
    "KTBNV0018_TRACE_CHANGE=trace {0} {1}\n"
    "KTBNV0062_NOT_CONNECTED=not {0}\n"
    "KTBNV0091_MESSAGE_TOO_SHORT=short {1}\n"
    "KTBNV0150_FFDC_TAKEN=taken\n";
constexpr const char* kWrongElements = "KTBNV_CAUSED_BY=caused by {0}\n";

const RasDescriptor& rd() {
  static const RasDescriptor descriptor("DiagnosticsLoad", kMessages);
  return descriptor;
}

// Throws away what the process writes to a stream; too much to keep.
class Silence {
 public:
  explicit Silence(std::FILE* stream) : stream_(stream), saved_(_dup(_fileno(stream))) {
    std::fflush(stream_);
    std::FILE* nowhere = std::fopen("NUL", "w");
    _dup2(_fileno(nowhere), _fileno(stream_));
    std::fclose(nowhere);
  }
  ~Silence() {
    std::fflush(stream_);
    _dup2(saved_, _fileno(stream_));
    _close(saved_);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  std::FILE* stream_;
  int saved_;
};

// Traces, formats, logs, captures and fails while it publishes.
class BusyHandler : public LogHandler {
 public:
  BusyHandler() : LogHandler(LogLevel::ALL) {}

  void publish(LogRecord& record) override {
    ++published_;
    const std::string text = record.getMessage();
    if (nested) return;
    const Nesting nesting;
    if (rd().isFlowOn()) Trace::data(rd(), TraceLevel::FLOW, this, "publish", text);
    const NYXException failure(NLS::format(rd(), "KTBNV0062_NOT_CONNECTED"));
    EventLog::infoNoFormat(rd(), failure.getMessage());
    FFDC::capture(rd(), "publish", FFDC::PROBE_001(), &failure);
    throw failure;
  }

  unsigned long published() const { return published_; }

 private:
  static thread_local bool nested;

  struct Nesting {
    Nesting() { nested = true; }
    ~Nesting() { nested = false; }
  };

  std::atomic<unsigned long> published_{0};
};

thread_local bool BusyHandler::nested = false;

void doEverything() {
  const bool flow = rd().isFlowOn();
  if (flow) Trace::entry(rd(), nullptr, "doEverything", std::string("argument"));
  EventLog::warningNoFormat(rd(), "an event");
  std::array<unsigned char, 8> bytes{};
  try {
    IPCMessage(bytes.data(), 4);
  } catch (const NYXException& cause) {
    const NYXException failure("failed", &cause);
    if (flow) Trace::throwing(rd(), "doEverything", &failure);
    EventLog::errorNoFormat(rd(), failure.toString());
    FFDC::capture(rd(), "doEverything", FFDC::PROBE_002(), &failure);
  }
  if (flow) Trace::exit(rd(), "doEverything");
}

void switchUntilOver() {
  Logger& root = *Logger::getLogger("");
  const auto end = std::chrono::steady_clock::now() + kDuration;
  while (std::chrono::steady_clock::now() < end) {
    RAS::setLevel("=ALL");
    RAS::setDebugLevel(TraceLevel::VERBOSE);
    ConsoleLogHandler console;
    root.addHandler(console);
    RAS::setLevel("+DiagnosticsLoad=VERBOSE:FFDC");
    root.removeHandler(console);
    RAS::setDebugLevel(TraceLevel::OFF);
    RAS::setLevel("");
  }
}

// In a process of its own, which reads the wrong catalogues instead of the right ones.
void runEverything() {
  setTestLimit(kLimit);
  const TempProduct product;
  product.writeCatalogue("KTBNVMessages", kWrongMessages);
  product.writeCatalogue("KTBNVElements", kWrongElements);
  BusyHandler handler;
  Logger::getLogger("")->addHandler(handler);
  std::atomic<bool> stop{false};
  std::array<std::atomic<unsigned long>, 8> rounds{};
  std::deque<Work> works;
  std::deque<NYXThreadImpl> threads;
  for (std::atomic<unsigned long>& count : rounds) {
    works.emplace_back([&stop, &count] {
      for (; !stop; ++count) doEverything();
      return 0;
    });
    threads.emplace_back(&works.back());
  }
  {
    const Silence output(stdout);
    const Silence errors(stderr);
    for (NYXThreadImpl& thread : threads) thread.start();
    switchUntilOver();
    stop = true;
    for (NYXThreadImpl& thread : threads) thread.join();
    Logger::getLogger("")->removeHandler(handler);
  }
  for (const std::atomic<unsigned long>& count : rounds) EXPECT_GT(count, 0U);
  EXPECT_GT(handler.published(), rounds.size());
  for (NYXThreadImpl& thread : threads) EXPECT_EQ(thread.getExitCode(), 0);
}

TEST(DiagnosticsLoad, EightThreadsTraceLogFailAndCaptureForTenSecondsAndNothingHangs) {
  setTestLimit(kLimit);
  inFreshProcess(runEverything);
}

}  // namespace
}  // namespace tessel::test
