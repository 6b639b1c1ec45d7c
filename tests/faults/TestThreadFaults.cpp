#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>

#include "support/Handles.h"
#include "support/ImportHook.h"
#include "support/RareError.h"
#include "support/RecordingHandler.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"
#include "support/TraceTest.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

// A thread that has been started once before, so that what a process opens with its first thread is there.
class ThreadFaults : public testing::Test {
 protected:
  ThreadFaults() {
    thread.start();
    thread.join();
  }

  Work work{[] { return 7; }};
  NYXThreadImpl thread{&work};
};

// Waiting for one handle, without disturbing the waits of the run-time.
using WaitHook = ImportHook<"WaitForSingleObject", decltype(WaitForSingleObject)>;

TEST_F(ThreadFaults, AThreadThatCannotBeCreatedIsReportedAndLeavesNothingOpen) {
  const HandleBaseline handles;
  NYXThreadImpl fresh(&work);
  {
    ImportHook<"CreateThread", decltype(CreateThread)> hook;
    hook.failAlways(kRareError);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(thrownBy<NYXException>([&] { fresh.start(); }),
                messageText("KTBNV0013_UNABLE_TO_CREATE_THREAD", kRareText));
    }
    EXPECT_EQ(hook.calls(), 3U);
  }
  EXPECT_EQ(handles.growth(), 0);
}

TEST_F(ThreadFaults, AThreadCanBeStartedAfterAStartThatFailed) {
  const HandleBaseline handles;
  ImportHook<"CreateThread", decltype(CreateThread)> hook;
  hook.failOnce(kRareError);
  NYXThreadImpl fresh(&work);
  EXPECT_THROW(fresh.start(), NYXException);
  fresh.start();
  fresh.join();
  EXPECT_EQ(fresh.getExitCode(), 7);
  EXPECT_EQ(hook.calls(), 2U);
  EXPECT_EQ(handles.growth(), 1);  // the handle of the thread that was started
}

TEST_F(ThreadFaults, AThreadIsCreatedWithTheSystemsDefaults) {
  ImportHook<"CreateThread", decltype(CreateThread)> hook;
  hook.replaceWith([&](LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE entry, LPVOID argument,
                       DWORD flags, LPDWORD id) {
    EXPECT_EQ(security, nullptr);
    EXPECT_EQ(stack, 0U);
    EXPECT_EQ(argument, &work);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(id, nullptr);
    return hook.callOriginal(security, stack, entry, argument, flags, id);
  });
  NYXThreadImpl fresh(&work);
  fresh.start();
  fresh.join();
  EXPECT_EQ(hook.calls(), 1U);
}

TEST_F(ThreadFaults, AThreadThatCannotBeTerminatedIsReported) {
  const HandleBaseline handles;
  ImportHook<"TerminateThread", decltype(TerminateThread)> hook;
  hook.failOnce(kRareError);
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.stop(); }),
            messageText("KTBNV0014_UNABLE_TO_TERMINATE_THREAD", kRareText));
  EXPECT_EQ(hook.calls(), 1U);
  EXPECT_EQ(thread.getExitCode(), 7);
  EXPECT_EQ(handles.growth(), 0);
}

TEST_F(ThreadFaults, AThreadIsTerminatedWithExitCodeZero) {
  ImportHook<"TerminateThread", decltype(TerminateThread)> hook;
  hook.replaceWith([](HANDLE, DWORD code) {
    EXPECT_EQ(code, 0U);
    return TRUE;
  });
  thread.stop();
  EXPECT_EQ(hook.calls(), 1U);
}

TEST_F(ThreadFaults, AJoinThatFailsIsReportedAndTheNextOneWorks) {
  const HandleBaseline handles;
  {
    WaitHook hook;
    hook.failOnce(kRareError, WAIT_FAILED);
    EXPECT_EQ(thrownBy<NYXException>([&] { thread.join(); }),
              messageText("KTBNV0015_WAIT_FOR_THREAD_FAILED", kRareText));
    hook.failOnce(kRareError, WAIT_FAILED);
    EXPECT_EQ(thrownBy<NYXException>([&] { thread.joinFor(5); }),
              messageText("KTBNV0015_WAIT_FOR_THREAD_FAILED", kRareText));
    thread.join();
    EXPECT_EQ(hook.calls(), 3U);
  }
  EXPECT_EQ(handles.growth(), 0);
}

TEST_F(ThreadFaults, AJoinThatEndsAnotherWayTellsTheResultOfTheWait) {
  WaitHook hook;
  for (const DWORD result : {static_cast<DWORD>(WAIT_ABANDONED), static_cast<DWORD>(WAIT_TIMEOUT), DWORD{77}}) {
    hook.failOnce(kRareError, result);
    EXPECT_EQ(thrownBy<NYXException>([&] { thread.join(); }),
              messageText("KTBNV0016_WAIT_FOR_THREAD_FAILED2", std::to_string(result)));
  }
  hook.failOnce(kRareError, WAIT_ABANDONED);
  EXPECT_EQ(thrownBy<NYXException>([&] { thread.joinFor(5); }),
            messageText("KTBNV0016_WAIT_FOR_THREAD_FAILED2", "128"));
  EXPECT_NO_THROW(thread.join());
}

TEST_F(ThreadFaults, JoinWaitsWithoutLimitAndJoinForAsLongAsItIsTold) {
  WaitHook hook;
  DWORD limit = 0;
  hook.replaceWith([&](HANDLE handle, DWORD milliseconds) {
    limit = milliseconds;
    return hook.callOriginal(handle, milliseconds);
  });
  thread.join();
  EXPECT_EQ(limit, INFINITE);
  thread.joinFor(4321);
  EXPECT_EQ(limit, 4321U);
}

TEST_F(ThreadFaults, AnExitCodeThatCannotBeReadIsReported) {
  const HandleBaseline handles;
  {
    ImportHook<"GetExitCodeThread", decltype(GetExitCodeThread)> hook;
    hook.failAlways(kRareError);
    const std::string expected = messageText("KTBNV0017_UNABLE_TO_GET_EXIT_CODE", kRareText);
    EXPECT_EQ(thrownBy<NYXException>([&] { thread.getExitCode(); }), expected);
    EXPECT_EQ(thrownBy<NYXException>([&] { thread.isAlive(); }), expected);
    EXPECT_EQ(hook.calls(), 2U);
  }
  EXPECT_EQ(thread.getExitCode(), 7);
  EXPECT_FALSE(thread.isAlive());
  EXPECT_EQ(handles.growth(), 0);
}

// The system gives the id of an ended thread to a new one. The thread is held before its first instruction.
TEST_F(ThreadFaults, AThreadBeginsAndEndsWithoutOpenMethodsOfItsId) {
  const TraceScope trace("threads.Fresh=FLOW");
  const RasDescriptor rd("threads.Fresh");
  const RecordingHandler log("threads.Fresh");
  unsigned long id = 0;
  Work entering([&rd] {
    Trace::entry(rd, "left open");
    return 0;
  });
  ImportHook<"CreateThread", decltype(CreateThread)> hook;
  hook.replaceWith(
      [&](SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE start, void* argument, DWORD, DWORD*) {
        const HANDLE suspended = hook.callOriginal(security, stack, start, argument, CREATE_SUSPENDED, &id);
        TraceTest::openMethod(id, "of a former thread");
        ResumeThread(suspended);
        return suspended;
      });
  NYXThreadImpl fresh(&entering);
  fresh.start();
  fresh.join();
  EXPECT_EQ(log.messages(), std::vector<std::string>{"  {  left open "});
  EXPECT_FALSE(TraceTest::hasStack(id));
}

}  // namespace
}  // namespace tessel::test
