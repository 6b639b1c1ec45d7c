#include <windows.h>

#include <gtest/gtest.h>

#include <future>
#include <string>

#include <tessel/NYXException.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/Synchronize.h>

#include "support/Handles.h"
#include "support/ImportHook.h"
#include "support/MonitorProbe.h"
#include "support/RareError.h"
#include "support/Thrown.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

using CreateEventHook = ImportHook<"CreateEventA", decltype(CreateEventA)>;
using ResetEventHook = ImportHook<"ResetEvent", decltype(ResetEvent)>;
using SetEventHook = ImportHook<"SetEvent", decltype(SetEvent)>;
using WaitHook = ImportHook<"WaitForSingleObject", decltype(WaitForSingleObject)>;

TEST(MonitorFaults, AnEventThatCannotBeCreatedIsReportedAndLeavesNothingOpen) {
  const HandleBaseline handles;
  {
    CreateEventHook hook;
    hook.failAlways(kRareError);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(thrownBy<NYXException>([] { NYXThreadSyncImpl(); }),
                messageText("KTBNV0008_UNABLE_TO_CREATE_EVENT", kRareText));
    }
    hook.passOn();
    EXPECT_NO_THROW(NYXThreadSyncImpl());
    EXPECT_EQ(hook.calls(), 4U);
  }
  EXPECT_EQ(handles.growth(), 1);  // the event of the monitor that was made
}

TEST(MonitorFaults, TheEventIsManualResetNotSignalledAndUnnamed) {
  CreateEventHook hook;
  hook.replaceWith([&](LPSECURITY_ATTRIBUTES security, BOOL manualReset, BOOL signalled, LPCSTR name) {
    EXPECT_EQ(security, nullptr);
    EXPECT_TRUE(manualReset);
    EXPECT_FALSE(signalled);
    EXPECT_EQ(name, nullptr);
    return hook.callOriginal(security, manualReset, signalled, name);
  });
  const NYXThreadSyncImpl monitor;
  EXPECT_EQ(hook.calls(), 1U);
}

TEST(MonitorFaults, AnEventThatCannotBeResetIsReportedWithTheMonitorStillHeld) {
  NYXThreadSyncImpl monitor;
  const HandleBaseline handles;
  {
    const Synchronize outer(&monitor);
    const Synchronize inner(&monitor);
    ResetEventHook hook;
    hook.failOnce(kRareError);
    EXPECT_EQ(thrownBy<NYXException>([&] { monitor.wait(0); }),
              messageText("KTBNV0010_UNABLE_TO_RESET_EVENT", kRareText));
    EXPECT_EQ(hook.calls(), 1U);
    EXPECT_FALSE(isFree(monitor));
    EXPECT_EQ(monitor.wait(0), -1);
    EXPECT_EQ(hook.calls(), 2U);
    EXPECT_FALSE(isFree(monitor));
  }
  EXPECT_TRUE(isFree(monitor));
  EXPECT_EQ(handles.growth(), 0);
}

TEST(MonitorFaults, AnEventThatCannotBeSetIsReportedAndTheNextNotificationArrives) {
  NYXThreadSyncImpl monitor;
  SetEventHook hook;
  monitor.lock();
  hook.failOnce(kRareError);
  EXPECT_EQ(thrownBy<NYXException>([&] { monitor.notifyAll(); }),
            messageText("KTBNV0009_UNABLE_TO_SET_EVENT", kRareText));
  EXPECT_EQ(monitor.wait(0), -1);
  const auto notifier = std::async(std::launch::async, [&] {
    const Synchronize guard(&monitor);
    monitor.notifyAll();
  });
  EXPECT_EQ(monitor.wait(-1), 0);
  EXPECT_EQ(releaseAll(monitor), 1);
}

// Runs one wait with the monitor held three times, in which the system's wait ends with the given result.
template <class Check>
void failingWait(NYXThreadSyncImpl& monitor, DWORD result, const Check& check) {
  for (int i = 0; i < 3; ++i) monitor.lock();
  WaitHook hook;
  hook.failOnce(kRareError, result);
  check(thrownBy<NYXException>([&] { monitor.wait(5); }));
}

TEST(MonitorFaults, AFailedWaitIsReportedWithTheMonitorReleased) {
  NYXThreadSyncImpl monitor;
  const HandleBaseline handles;
  failingWait(monitor, WAIT_FAILED, [&](const std::string& message) {
    EXPECT_EQ(message, messageText("KTBNV0011_WAIT_FOR_EVENT_FAILED", kRareText));
  });
  EXPECT_TRUE(isFree(monitor));
  EXPECT_LE(handles.growth(), 0);
}

TEST(MonitorFaults, AWaitThatEndsAnotherWayTellsItsResult) {
  for (const DWORD result : {static_cast<DWORD>(WAIT_ABANDONED), DWORD{77}}) {
    NYXThreadSyncImpl monitor;
    failingWait(monitor, result, [&](const std::string& message) {
      EXPECT_EQ(message, messageText("KTBNV0012_WAIT_FOR_EVENT_FAILED2", std::to_string(result)));
    });
    EXPECT_TRUE(isFree(monitor));
  }
}

TEST(MonitorFaults, TheUnlocksThatFollowAFailedWaitDoNoHarm) {
  NYXThreadSyncImpl monitor;
  failingWait(monitor, WAIT_FAILED, [](const std::string&) {});
  for (int i = 0; i < 3; ++i) monitor.unlock();  // as the caller's guards do
  EXPECT_TRUE(isFree(monitor));
  monitor.lock();
  EXPECT_FALSE(isFree(monitor));
  EXPECT_EQ(releaseAll(monitor), 1);
}

TEST(MonitorFaults, GuardsSurviveAFailedWait) {
  NYXThreadSyncImpl monitor;
  WaitHook hook;
  hook.failOnce(kRareError, WAIT_FAILED);
  const auto waitHeld = [&monitor] {
    const Synchronize guard(&monitor);
    monitor.wait(5);
  };
  EXPECT_THROW(waitHeld(), NYXException);
  EXPECT_TRUE(isFree(monitor));
  EXPECT_NO_THROW(waitHeld());
  EXPECT_TRUE(isFree(monitor));
}

TEST(MonitorFaults, AFailedWaitIsNoWaiterAnyMore) {
  NYXThreadSyncImpl monitor;
  failingWait(monitor, WAIT_FAILED, [](const std::string&) {});
  for (int i = 0; i < 3; ++i) monitor.unlock();
  monitor.notifyAll();
  const Synchronize guard(&monitor);
  EXPECT_EQ(monitor.wait(0), -1);  // the notification had nobody to wait for
}

TEST(MonitorFaults, TheLimitReachesTheSystemUnchanged) {
  NYXThreadSyncImpl monitor;
  const Synchronize guard(&monitor);
  WaitHook hook;
  DWORD limit = 0;
  hook.replaceWith([&limit](HANDLE, DWORD milliseconds) -> DWORD {
    limit = milliseconds;
    return WAIT_TIMEOUT;
  });
  EXPECT_EQ(monitor.wait(4321), -1);
  EXPECT_EQ(limit, 4321U);
  monitor.wait();
  EXPECT_EQ(limit, INFINITE);
}

}  // namespace
}  // namespace tessel::test
