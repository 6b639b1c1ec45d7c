#include <windows.h>

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXIOException.h>
#include <tessel/NYXThreadImpl.h>

#include "support/Captures.h"
#include "support/ChildProcess.h"
#include "support/Handles.h"
#include "support/Records.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

using testing::HasSubstr;
using Texts = std::vector<std::string>;

// The system's own event: also a thread that is terminated while it waits leaves it whole.
class SystemEvent {
 public:
  SystemEvent() : handle_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}
  ~SystemEvent() { CloseHandle(handle_); }
  SystemEvent(const SystemEvent&) = delete;
  SystemEvent& operator=(const SystemEvent&) = delete;

  void set() const { SetEvent(handle_); }
  void await() const { WaitForSingleObject(handle_, INFINITE); }

 private:
  HANDLE handle_;
};

long exitCodeOf(Work& work) {
  NYXThreadImpl thread(&work);
  thread.start();
  thread.join();
  return thread.getExitCode();
}

TEST(Thread, KnowsItsRunnable) {
  Work work([] { return 0; });
  EXPECT_EQ(NYXThreadImpl(&work).getRunnable(), &work);
}

TEST(Thread, TellsTheIdOfTheCallingThread) {
  EXPECT_EQ(NYXThread::getCurrentThreadId(), GetCurrentThreadId());
  EXPECT_EQ(NYXThreadImpl::getCurrentThreadId(), GetCurrentThreadId());
}

TEST(Thread, RunsTheRunnableOnAThreadOfItsOwn) {
  unsigned long id = 0;
  Work work([&id] {
    id = NYXThread::getCurrentThreadId();
    return 0;
  });
  EXPECT_EQ(exitCodeOf(work), 0);
  EXPECT_NE(id, 0U);
  EXPECT_NE(id, GetCurrentThreadId());
}

TEST(Thread, EndsWithTheResultOfRun) {
  Work work([] { return 7; });
  NYXThreadImpl thread(&work);
  thread.start();
  thread.join();
  EXPECT_EQ(thread.getExitCode(), 7);
  EXPECT_FALSE(thread.isAlive());
}

TEST(Thread, KeepsANegativeResult) {
  Work work([] { return -2; });
  EXPECT_EQ(exitCodeOf(work), -2);
}

TEST(Thread, IsAliveWithExitCode259WhileItRuns) {
  const SystemEvent end;
  Work work([&end] {
    end.await();
    return 0;
  });
  NYXThreadImpl thread(&work);
  thread.start();
  EXPECT_TRUE(thread.isAlive());
  EXPECT_EQ(thread.getExitCode(), 259);
  end.set();
  thread.join();
  EXPECT_FALSE(thread.isAlive());
  EXPECT_EQ(thread.getExitCode(), 0);
}

TEST(Thread, LooksAliveWhenRunReturnsTheStillActiveValue) {
  Work work([] { return 259; });
  NYXThreadImpl thread(&work);
  thread.start();
  thread.join();
  EXPECT_TRUE(thread.isAlive());
}

TEST(Thread, HasNoStateBeforeItsStart) {
  Work work([] { return 0; });
  NYXThreadImpl thread(&work);
  const std::string invalidHandle = std::to_string(ERROR_INVALID_HANDLE);
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.isAlive(); }),
            messageText("KTBNV0017_UNABLE_TO_GET_EXIT_CODE", invalidHandle));
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.getExitCode(); }),
            messageText("KTBNV0017_UNABLE_TO_GET_EXIT_CODE", invalidHandle));
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.stop(); }),
            messageText("KTBNV0014_UNABLE_TO_TERMINATE_THREAD", invalidHandle));
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.join(); }),
            messageText("KTBNV0015_WAIT_FOR_THREAD_FAILED", invalidHandle));
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.joinFor(0); }),
            messageText("KTBNV0015_WAIT_FOR_THREAD_FAILED", invalidHandle));
  EXPECT_NO_THROW(thread.cancelBlockedCall());
}

TEST(Thread, StoppedEndsWithZero) {
  const SystemEvent running;
  const SystemEvent never;
  Work work([&] {
    running.set();
    never.await();
    return 7;
  });
  NYXThreadImpl thread(&work);
  thread.start();
  running.await();
  thread.stop();
  thread.join();
  EXPECT_EQ(thread.getExitCode(), 0);
  EXPECT_FALSE(thread.isAlive());
}

TEST(Thread, CanBeJoinedMoreThanOnce) {
  Work work([] { return 3; });
  NYXThreadImpl thread(&work);
  thread.start();
  thread.join();
  thread.join();
  EXPECT_TRUE(thread.joinFor(0));
  EXPECT_EQ(thread.getExitCode(), 3);
}

TEST(Thread, JoinForTellsWhetherTheThreadHasEnded) {
  const SystemEvent end;
  Work work([&end] {
    end.await();
    return 0;
  });
  NYXThreadImpl thread(&work);
  thread.start();
  EXPECT_FALSE(thread.joinFor(0));
  end.set();
  EXPECT_TRUE(thread.joinFor(INFINITE));
}

TEST(Thread, ACopyWatchesTheSameThread) {
  Work work([] { return 11; });
  NYXThreadImpl thread(&work);
  thread.start();
  NYXThreadImpl copy(thread);
  Work none([] { return 0; });
  NYXThreadImpl assigned(&none);
  assigned = thread;
  copy.join();
  EXPECT_EQ(copy.getExitCode(), 11);
  EXPECT_EQ(assigned.getExitCode(), 11);
  EXPECT_EQ(assigned.getRunnable(), &work);
}

TEST(Thread, LeavesItsHandleOpen) {
  Work work([] { return 0; });
  exitCodeOf(work);  // whatever the first thread of a process opens once
  const HandleBaseline handles;
  for (int i = 0; i < 10; ++i) exitCodeOf(work);
  EXPECT_EQ(handles.growth(), 10);
}

TEST(Thread, CancelBlockedCallEndsABlockedPipeRead) {
  HANDLE readEnd = nullptr;
  HANDLE writeEnd = nullptr;
  ASSERT_TRUE(CreatePipe(&readEnd, &writeEnd, nullptr, 0));
  Work work([readEnd]() -> long {
    char byte = 0;
    DWORD length = 0;
    if (ReadFile(readEnd, &byte, 1, &length, nullptr)) return 0;
    return static_cast<long>(GetLastError());
  });
  NYXThreadImpl thread(&work);
  thread.start();
  while (!thread.joinFor(1)) thread.cancelBlockedCall();
  EXPECT_EQ(thread.getExitCode(), ERROR_OPERATION_ABORTED);
  CloseHandle(readEnd);
  CloseHandle(writeEnd);
}

TEST(Thread, ReportsAnUncaughtExceptionOnceAndEndsWithMinusOne) {
  const NYXIOException failure("the disk is gone");
  Work work([&failure]() -> long { throw failure; });
  const RecordingHandler log("NYXThreadImpl");
  const Captures captures;
  EXPECT_EQ(exitCodeOf(work), -1);

  const std::string exception = "class NYXIOException: the disk is gone";
  const auto errors = recordsOf(log, LogRecordType::EVENT);
  ASSERT_EQ(errors.size(), 1U);
  EXPECT_EQ(errors[0].level, LogLevel::SEVERE);
  EXPECT_EQ(errors[0].message, messageText("KTBNV0149_UNCAUGHT_EXCEPTION", exception));

  EXPECT_EQ(captures.values("Class:"), Texts{"class NYXThreadImpl"});
  EXPECT_EQ(captures.values("Method:"), Texts{"clientThreadWrapper"});
  EXPECT_EQ(captures.values("Probe:"), Texts{"FFDC_001"});
  EXPECT_EQ(captures.values("Cause:"), Texts{exception});
}

TEST(Thread, TracesTheUncaughtException) {
  Work work([]() -> long { throw NYXException("lost"); });
  const TraceScope trace("NYXThreadImpl=MODERATE");
  const RecordingHandler log("NYXThreadImpl");
  exitCodeOf(work);
  const auto data = recordsOf(log, LogRecordType::DATA, "clientThreadWrapper");
  ASSERT_EQ(data.size(), 1U);
  EXPECT_EQ(data[0].level, LogLevel::FINER);
  EXPECT_THAT(data[0].message, HasSubstr("[Uncaught exception] [class NYXException: lost]"));
}

TEST(Thread, TracesItsEntryAndItsExitWithTheExitCode) {
  Work work([] { return 7; });
  const TraceScope trace("NYXThreadImpl=FLOW");
  const RecordingHandler log("NYXThreadImpl");
  exitCodeOf(work);
  EXPECT_EQ(recordsOf(log, LogRecordType::ENTRY, "clientThreadWrapper").size(), 1U);
  const auto exits = recordsOf(log, LogRecordType::EXIT, "clientThreadWrapper");
  ASSERT_EQ(exits.size(), 1U);
  EXPECT_THAT(exits[0].message, HasSubstr(" returns [7] "));
}

// The bodies of child processes: each would return 0 if the process survived.
int runThrowing(std::function<long()> body) {
  Work work(std::move(body));
  exitCodeOf(work);
  return 0;
}

class Unexpected : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

const ChildRegistration standardException("thread-throws-standard-exception", [] {
  return runThrowing([]() -> long { throw Unexpected("out of luck"); });
});
const ChildRegistration otherException("thread-throws-number", [] { return runThrowing([]() -> long { throw 42; }); });

TEST(Thread, AStandardExceptionEndsTheProcessAndSaysClassAndText) {
  const ChildResult child = runChild("thread-throws-standard-exception");
  EXPECT_THAT(child.standardError, HasSubstr("class Unexpected: out of luck"));
  EXPECT_EQ(child.exitCode, 3U);  // of abort()
}

TEST(Thread, AnyOtherExceptionEndsTheProcess) {
  const ChildResult child = runChild("thread-throws-number");
  EXPECT_THAT(child.standardError, HasSubstr("an exception that is no std::exception"));
  EXPECT_EQ(child.exitCode, 3U);
}

}  // namespace
}  // namespace tessel::test
