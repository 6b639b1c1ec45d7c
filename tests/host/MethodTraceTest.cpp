// The guard by which the library's methods report themselves.
#include "internal/MethodTrace.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <tessel/IPCException.h>
#include <tessel/LogRecord.h>
#include <tessel/Logger.h>

#include "internal/DiagnosticsLock.h"
#include "support/RecordingHandler.h"
#include "support/TraceScope.h"

namespace tessel::host {
namespace {

using internal::MethodTrace;
using Texts = std::vector<std::string>;

// A class with trace fully on, and what it traces.
struct Traced {
  explicit Traced(const std::string& name) : scope(name + "=ALL"), rd(name), handler(name) {}

  test::TraceScope scope;
  RasDescriptor rd;
  test::RecordingHandler handler;
};

// Another thread that is in the middle of a trace point for as long as the object lives.
class BusyTrace : public LogHandler {
 public:
  BusyTrace() : LogHandler(LogLevel::ALL), rd_("guard.Busy") {
    rd_.getLogger()->setLevel(LogLevel::ALL);
    rd_.getLogger()->addHandler(*this);
    thread_ = std::thread([this] { Trace::data(rd_, TraceLevel::FLOW, "m"); });
    entered_.get_future().wait();
  }
  ~BusyTrace() override {
    release_.set_value();
    thread_.join();
    rd_.getLogger()->removeHandler(*this);
  }
  BusyTrace(const BusyTrace&) = delete;
  BusyTrace& operator=(const BusyTrace&) = delete;

  void publish(LogRecord& /*record*/) override {
    entered_.set_value();
    release_.get_future().wait();
  }

 private:
  RasDescriptor rd_;
  std::promise<void> entered_;
  std::promise<void> release_;
  std::thread thread_;
};

TEST(MethodTrace, TracesEntryAndExit) {
  const Traced traced("guard.Both");
  { const MethodTrace trace(traced.rd, &traced, "m", std::string("text"), 7, true); }
  EXPECT_EQ((Texts{"  {  m [text] [7] [true]", "  }  m"}), traced.handler.messages());
  EXPECT_EQ(&traced, traced.handler.records().front().object);
}

TEST(MethodTrace, TracesNothingWhenOff) {
  const test::RecordingHandler handler("guard.Off");
  const RasDescriptor rd("guard.Off");
  { const MethodTrace trace(rd, nullptr, "m"); }
  EXPECT_EQ(Texts{}, handler.messages());
}

TEST(MethodTrace, ExitShowsTheResultWithItsType) {
  const Traced traced("guard.Result");
  const auto returns = [&traced](const auto& value) { return MethodTrace(traced.rd, nullptr, "m").result(value); };
  returns(true);
  returns(7);
  returns(std::int64_t{8});
  returns(std::string("text"));
  const Texts messages = traced.handler.messages();
  ASSERT_EQ(8U, messages.size());
  EXPECT_EQ("  }  m returns [true] bool", messages[1]);
  EXPECT_EQ("  }  m returns [7] int", messages[3]);
  EXPECT_EQ("  }  m returns [8] long long", messages[5]);
  EXPECT_EQ("  }  m returns [text] string", messages[7]);
}

TEST(MethodTrace, FailureIsTracedAndTheExitToo) {
  const Traced traced("guard.Failure");
  EXPECT_THROW(
      {
        const MethodTrace trace(traced.rd, nullptr, "m");
        throw trace.failure<IPCException>("KTBNV9999_NONE", "a");
      },
      IPCException);
  EXPECT_EQ((Texts{"  {  m ", "-  !  m, class IPCException: KTBNV9999_NONE a[class IPCException]", "  }  m"}),
            traced.handler.messages());
}

// What a method sends whose entry meets a busy trace while the thread is marked.
template <class Mark>
Texts sentAfterEntryWith() {
  const Traced traced("guard.Dropped");
  std::optional<MethodTrace> trace;
  {
    const BusyTrace busy;
    const Mark mark;
    trace.emplace(traced.rd, nullptr, "m");
  }
  trace.reset();
  return traced.handler.messages();
}

TEST(MethodTrace, EntryThatIsDroppedSendsNoExit) {
  EXPECT_EQ(Texts{}, sentAfterEntryWith<internal::NoBlockingTrace>());
}

TEST(MethodTrace, EntryInsideALogFileIsDroppedInsteadOfWaitedFor) {
  EXPECT_EQ(Texts{}, sentAfterEntryWith<internal::InsideLogFile>());
}

TEST(MethodTrace, ExitThatIsDroppedIsPoppedAtTheNextPoint) {
  const Traced traced("guard.Deferred");
  std::optional<MethodTrace> trace(std::in_place, traced.rd, nullptr, "m");
  {
    const BusyTrace busy;
    const internal::NoBlockingTrace mark;
    trace.reset();
  }
  Trace::data(traced.rd, TraceLevel::FLOW, "next");
  EXPECT_EQ((Texts{"  {  m ", "  d  next data "}), traced.handler.messages());
}

TEST(MethodTrace, ExitIsPoppedWhenTraceIsSwitchedOffInBetween) {
  const Traced traced("guard.Switched");
  {
    const MethodTrace trace(traced.rd, nullptr, "m");
    traced.rd.getLogger()->setLevel(LogLevel::INFO);
  }
  traced.rd.getLogger()->setLevel(LogLevel::ALL);
  Trace::data(traced.rd, TraceLevel::FLOW, "next");
  EXPECT_EQ((Texts{"  {  m ", "  d  next data "}), traced.handler.messages());
}

}  // namespace
}  // namespace tessel::host
