// Everything that the diagnostics can do, from eight threads at once, with the catalogue texts against them.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <deque>
#include <filesystem>
#include <iostream>
#include <streambuf>
#include <string>

#include <tessel/ConsoleLogHandler.h>
#include <tessel/EventLog.h>
#include <tessel/FFDC.h>
#include <tessel/IPCMessage.h>
#include <tessel/LogFileProperties.h>
#include <tessel/LogHandler.h>
#include <tessel/LogRecord.h>
#include <tessel/Logger.h>
#include <tessel/NYXEnvironment.h>
#include <tessel/NYXException.h>
#include <tessel/NYXRunnable.h>
#include <tessel/NYXThreadImpl.h>
#include <tessel/NativePropertyItem.h>
#include <tessel/RAS.h>

#include "host/Watchdog.h"
#include "internal/Bundles.h"
#include "internal/MethodTrace.h"
#include "support/FreshProcess.h"
#include "support/TempFolder.h"
#include "support/TempProduct.h"

namespace tessel::host {
namespace {

using internal::MethodTrace;

constexpr std::chrono::seconds kDuration{10};
constexpr std::chrono::seconds kGrace{120};
constexpr unsigned kThreads = 8;

const RasDescriptor rd("Stress", internal::kMessages);
const RasDescriptor handlerRd("StressHandler", internal::kMessages);
const RasDescriptor debugRd("StressDebug", internal::kMessages, nullptr);

// Too many placeholders and too few, also in the texts that a report of that goes through.
constexpr const char* kWrongMessages =
    "KTBNV0018_TRACE_CHANGE=trace {0} {1}\n"
    "KTBNV0051_MKDIR_FAILED=directory {1}\n"
    "KTBNV0052_UNABLE_TO_WRITE_TO_EVENT_LOG=event log {1}\n"
    "KTBNV0053_UNABLE_TO_WRITE_TO_TRACE=trace file\n"
    "KTBNV0054_UNABLE_TO_OPEN_FILE=open {0}\n"
    "KTBNV0056_RENAME_FAILED=rename {0} {1} {2} {3}\n"
    "KTBNV0062_NOT_CONNECTED=not {0}\n"
    "KTBNV0066_OPEN_ERROR=open\n"
    "KTBNV0091_MESSAGE_TOO_SHORT=short {1}\n"
    "KTBNV0084_FFDC_TAKEN=taken {0} {1}\n"
    "KTBNV0118_NOT_AN_INTEGER=integer {0}\n"
    "KTBNV0150_FFDC_TAKEN=taken\n";
constexpr const char* kWrongElements =
    "KTBNV_CAUSED_BY=caused by {0}\n"
    "KTBNV_EVENT_LOG_PREFIX=event log {0}\n";

// Takes what is written to a standard stream and keeps nothing.
class Nowhere : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

// Traces, logs and captures while it publishes.
class BusyHandler : public LogHandler {
 public:
  BusyHandler() : LogHandler(LogLevel::ALL) {}

  void publish(LogRecord& record) override {
    MethodTrace trace(handlerRd, this, "publish", record);
    ++published_;
    if (record.getType() != LogRecordType::EVENT && record.getMessage().find("***") != std::string::npos) ++unbalanced_;
    if (nested) return;
    nested = true;
    try {
      const auto failure = trace.failure<NYXException>("KTBNV0062_NOT_CONNECTED");
      EventLog::infoNoFormat(handlerRd, failure.getMessage());
      FFDC::capture(handlerRd, "publish", FFDC::PROBE_001(), &failure);
      nested = false;
    } catch (...) {
      nested = false;
      throw;
    }
    throw NYXException("a handler that fails");
  }

  unsigned long published() const { return published_; }
  unsigned long unbalanced() const { return unbalanced_; }

 private:
  static thread_local bool nested;

  std::atomic<unsigned long> published_{0};
  std::atomic<unsigned long> unbalanced_{0};  // records that miss an entry or an exit
};

thread_local bool BusyHandler::nested = false;

// One of the threads; what it does at the moment can be asked from another one.
class Worker : public NYXRunnable {
 public:
  explicit Worker(const std::atomic<bool>& stop) : stop_(stop), thread_(this) {}

  void start() { thread_.start(); }
  void join() { thread_.join(); }
  bool isAlive() { return thread_.isAlive(); }
  const char* step() const { return step_; }
  unsigned long rounds() const { return rounds_; }

  long run() override {
    while (!stop_) {
      step_ = "method trace";
      descend(3);
      step_ = "debug trace";
      MethodTrace(debugRd, this, "run", "debug").data(TraceLevel::VERBOSE, "data");
      step_ = "event log";
      EventLog::infoNoFormat(rd, "an event");
      EventLog::warningNoFormat(debugRd, "a debug event");
      step_ = "failure with a cause";
      failWithCause();
      step_ = "refused message";
      std::array<unsigned char, 8> bytes{};
      EXPECT_THROW(IPCMessage(bytes.data(), 4), NYXException);
      step_ = "refused property";
      const std::string value = "none";
      EXPECT_THROW(NativePropertyItem("key", 1).getIntegerValue(&value), NYXException);
      step_ = "end of a round";
      ++rounds_;
    }
    step_ = "ended";
    return 0;
  }

 private:
  void descend(int depth) const {
    MethodTrace trace(rd, this, "descend", depth);
    trace.data(TraceLevel::MODERATE, "depth", depth);
    if (depth > 0) descend(depth - 1);
    trace.result(depth);
  }

  void failWithCause() const {
    const MethodTrace trace(rd, this, "failWithCause");
    try {
      throw trace.failure<NYXException>("KTBNV0066_OPEN_ERROR", "pipe", "text");
    } catch (const NYXException& cause) {
      const NYXException failure("failed", &cause);
      EventLog::errorNoFormat(rd, trace.thrown(failure).toString());
      FFDC::capture(rd, "failWithCause", FFDC::PROBE_001(), &failure);
    }
  }

  const std::atomic<bool>& stop_;
  std::atomic<const char*> step_{"start"};
  std::atomic<unsigned long> rounds_{0};
  NYXThreadImpl thread_;
};

// Files that rotate at every second line; the trace can never be rotated, since a folder is in the way.
class LogFiles {
 public:
  LogFiles() {
    NYXEnvironment::setProperty("com.kelvo.tessel.native.logdir", folder_.path().string());
    folder_.write("trace1.log/file", "in the way");
    initialize();
  }
  ~LogFiles() { RAS::shutdown(); }
  LogFiles(const LogFiles&) = delete;
  LogFiles& operator=(const LogFiles&) = delete;

  // Removes the former handlers while others use them.
  void initialize() const { RAS::initialize(RASEnvironment::UNITTEST, files("event%g.log"), files("trace%g.log"), ""); }

  void removeCaptures() const {
    std::error_code ignored;
    std::filesystem::remove_all(folder_.path() / "ffdc", ignored);
  }

 private:
  LogFileProperties files(const char* name) const {
    constexpr int kTwoLines = 150;
    return {(folder_.path() / name).string(), kTwoLines, 3, true, false};
  }

  test::TempFolder folder_;
};

// Switches trace on and off and changes handlers until the time is over.
void switchUntilOver(const LogFiles& files, std::atomic<const char*>& step) {
  Logger& root = *Logger::getLogger("");
  const auto end = std::chrono::steady_clock::now() + kDuration;
  while (std::chrono::steady_clock::now() < end) {
    step = "switching trace on";
    RAS::setLevel("=ALL");
    RAS::setDebugLevel(TraceLevel::VERBOSE);
    step = "a handler that comes and goes";
    ConsoleLogHandler console;
    root.addHandler(console);
    step = "adding to the trace";
    RAS::setLevel("+Stress,StressHandler=VERBOSE:FFDC");
    root.removeHandler(console);
    step = "switching trace off";
    RAS::setDebugLevel(TraceLevel::OFF);
    RAS::setLevel("");
    step = "setting up anew";
    files.initialize();
    files.removeCaptures();
  }
  RAS::setLevel("=ALL");
}

void check(const std::deque<Worker>& workers, const BusyHandler& handler) {
  for (const Worker& worker : workers) EXPECT_GT(worker.rounds(), 0U);
  EXPECT_GT(handler.published(), kThreads);
  EXPECT_EQ(handler.unbalanced(), 0U);
  const unsigned long before = handler.published();
  MethodTrace(rd, nullptr, "check");
  EXPECT_GE(handler.published(), before + 2) << "trace no longer comes through";
}

// In a process of its own, which reads the wrong catalogues instead of the right ones.
void runEverything() {
  const test::TempProduct product;
  product.writeCatalogue("KTBNVMessages", kWrongMessages);
  product.writeCatalogue("KTBNVElements", kWrongElements);
  Nowhere nowhere;
  std::streambuf* const out = std::cout.rdbuf(&nowhere);
  std::streambuf* const err = std::cerr.rdbuf(&nowhere);

  const LogFiles files;
  BusyHandler handler;
  Logger& root = *Logger::getLogger("");
  root.addHandler(handler);
  std::atomic<bool> stop{false};
  std::atomic<const char*> mainStep{"start"};
  std::deque<Worker> workers;
  for (unsigned i = 0; i < kThreads; ++i) workers.emplace_back(stop);
  {
    const Watchdog watchdog(kDuration + kGrace, [&] {
      std::string text = std::string("main thread: ") + mainStep.load();
      for (const Worker& worker : workers) text += std::string(", worker: ") + worker.step();
      return text;
    });
    for (Worker& worker : workers) worker.start();
    switchUntilOver(files, mainStep);
    stop = true;
    mainStep = "waiting for the workers";
    for (Worker& worker : workers) worker.join();
    mainStep = "last trace point";
    check(workers, handler);
    mainStep = "removing the handler";
    root.removeHandler(handler);
  }
  std::cout.rdbuf(out);
  std::cerr.rdbuf(err);
}

}  // namespace

TEST(DiagnosticsStress, EightThreadsTraceLogFailAndCaptureForTenSecondsAndNothingHangs) {
  test::inFreshProcess(runEverything);
}

}  // namespace tessel::host
