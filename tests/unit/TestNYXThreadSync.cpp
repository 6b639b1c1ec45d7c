#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/Synchronize.h>

#include "support/Captures.h"
#include "support/Handles.h"
#include "support/MonitorProbe.h"
#include "support/Records.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"
#include "support/Watchdog.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

TEST(Monitor, IsFreeWhenMade) {
  NYXThreadSyncImpl monitor;
  EXPECT_TRUE(isFree(monitor));
}

TEST(Monitor, IsFreeAgainAfterAsManyUnlocksAsLocks) {
  NYXThreadSyncImpl monitor;
  for (int i = 0; i < 3; ++i) monitor.lock();
  EXPECT_EQ(releaseAll(monitor), 3);
}

TEST(Monitor, TryLockNestsForTheHolderAndFailsForOthers) {
  NYXThreadSyncImpl monitor;
  EXPECT_TRUE(monitor.tryLock());
  EXPECT_TRUE(monitor.tryLock());
  EXPECT_FALSE(onOtherThread([&] { return monitor.tryLock(); }));
  EXPECT_EQ(releaseAll(monitor), 2);
}

TEST(Monitor, TryLockWithALimitNestsForTheHolderAndGivesUpForOthers) {
  NYXThreadSyncImpl monitor;
  EXPECT_TRUE(monitor.tryLock(0));
  EXPECT_TRUE(monitor.tryLock(1));
  EXPECT_FALSE(onOtherThread([&] { return monitor.tryLock(0); }));
  EXPECT_FALSE(onOtherThread([&] { return monitor.tryLock(20); }));
  EXPECT_EQ(releaseAll(monitor), 2);
}

TEST(Monitor, TryLockWithALimitGetsTheMonitorAsSoonAsItIsFree) {
  constexpr long kHour = 3'600'000;
  constexpr int kThreads = 4;
  constexpr int kRounds = 500;
  NYXThreadSyncImpl monitor;
  int value = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        if (!monitor.tryLock(kHour)) continue;
        ++value;
        monitor.unlock();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(value, kThreads * kRounds);
  EXPECT_TRUE(isFree(monitor));
}

TEST(Monitor, LockBlocksUntilTheHolderUnlocks) {
  NYXThreadSyncImpl monitor;
  int value = 1;
  monitor.lock();
  std::thread other([&] {
    const Synchronize guard(&monitor);
    value *= 10;
  });
  value += 1;
  monitor.unlock();
  other.join();
  EXPECT_EQ(value, 20);
}

TEST(Monitor, WaitOfZeroTimesOutAtOnceAndKeepsTheHolds) {
  NYXThreadSyncImpl monitor;
  monitor.lock();
  monitor.lock();
  EXPECT_EQ(monitor.wait(0), -1);
  EXPECT_EQ(releaseAll(monitor), 2);
}

TEST(Monitor, WaitReleasesEveryNestedHoldAndTakesThemBack) {
  NYXThreadSyncImpl monitor;
  for (int i = 0; i < 3; ++i) monitor.lock();
  std::thread other([&] {
    const Synchronize guard(&monitor);  // possible only while the first thread waits
    monitor.notifyAll();
  });
  EXPECT_EQ(monitor.wait(-1), 0);
  other.join();
  EXPECT_EQ(releaseAll(monitor), 3);
}

TEST(Monitor, WaitComesBackOnlyWithTheMonitorHeld) {
  NYXThreadSyncImpl monitor;
  bool done = false;
  monitor.lock();
  std::thread other([&] {
    const Synchronize guard(&monitor);
    monitor.notifyAll();
    std::this_thread::yield();
    done = true;
  });
  EXPECT_EQ(monitor.wait(-1), 0);
  EXPECT_TRUE(done);
  monitor.unlock();
  other.join();
}

TEST(Monitor, WaitByAThreadThatDoesNotHoldItFailsAndIsCaptured) {
  NYXThreadSyncImpl monitor;
  monitor.lock();
  const Captures captures;
  EXPECT_EQ(onOtherThread([&] { return thrownBy<NYXException>([&] { monitor.wait(0); }); }),
            messageText("KTBNV0171_THREAD_NOT_OWNER"));
  EXPECT_EQ(releaseAll(monitor), 1);
  using Values = std::vector<std::string>;
  EXPECT_EQ(captures.values("Class:"), Values{"NYXThreadSyncImpl"});
  EXPECT_EQ(captures.values("Method:"), Values{"wait"});
  EXPECT_EQ(captures.values("Probe:"), Values{"FFDC_001"});
  EXPECT_EQ(captures.values("Cause:"), Values{"class NYXException: " + messageText("KTBNV0171_THREAD_NOT_OWNER")});
}

TEST(Monitor, WaitOnAFreeMonitorFails) {
  NYXThreadSyncImpl monitor;
  EXPECT_EQ(thrownBy<NYXException>([&] { monitor.wait(); }), messageText("KTBNV0171_THREAD_NOT_OWNER"));
  EXPECT_TRUE(isFree(monitor));
}

TEST(Monitor, ANotificationWithNobodyWaitingIsNotKept) {
  NYXThreadSyncImpl monitor;
  monitor.notifyAll();
  const Synchronize guard(&monitor);
  EXPECT_EQ(monitor.wait(100), -1);
}

TEST(Monitor, ANotificationIsUsedUpByTheWaitThatItEnded) {
  NYXThreadSyncImpl monitor;
  const Synchronize guard(&monitor);
  std::thread other([&] {
    const Synchronize inner(&monitor);
    monitor.notifyAll();
  });
  EXPECT_EQ(monitor.wait(-1), 0);
  other.join();
  EXPECT_EQ(monitor.wait(0), -1);
}

TEST(Monitor, NotifyAllNeedsNoHold) {
  NYXThreadSyncImpl monitor;
  std::atomic<bool> woken{false};
  monitor.lock();
  std::thread other([&] {
    while (!woken) monitor.notifyAll();
  });
  EXPECT_EQ(monitor.wait(-1), 0);
  woken = true;
  monitor.unlock();
  other.join();
}

TEST(Monitor, NotifyAllWakesEveryWaiter) {
  constexpr int kWaiters = 8;
  NYXThreadSyncImpl monitor;
  int waiting = 0;
  std::atomic<int> notified{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < kWaiters; ++i) {
    waiters.emplace_back([&] {
      const Synchronize guard(&monitor);
      ++waiting;
      if (monitor.wait(-1) == 0) ++notified;
    });
  }
  for (bool all = false; !all; std::this_thread::yield()) {
    const Synchronize guard(&monitor);
    all = waiting == kWaiters;
    if (all) monitor.notifyAll();
  }
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(notified, kWaiters);
}

TEST(Monitor, WaitWithoutLimitGoesThroughTheVirtualOperation) {
  class Recording : public NYXThreadSyncImpl {
   public:
    using NYXThreadSyncImpl::wait;
    int wait(long timeoutMillis) override {
      limits.push_back(timeoutMillis);
      return -1;
    }
    std::vector<long> limits;
  };
  Recording monitor;
  monitor.wait();
  EXPECT_EQ(monitor.limits, std::vector<long>{-1});
}

TEST(Monitor, UnlockByAStrangerFreesTheSectionAndKeepsTheRecordOfTheHolder) {
  NYXThreadSyncImpl monitor;
  monitor.lock();
  onOtherThread([&] { monitor.unlock(); });
  EXPECT_EQ(monitor.wait(0), -1);  // still the holder: a stranger's wait would throw
  EXPECT_FALSE(isFree(monitor));
  EXPECT_EQ(releaseAll(monitor), 1);
}

TEST(Monitor, AfterUnlockByAStrangerOthersCanLock) {
  NYXThreadSyncImpl monitor;
  monitor.lock();
  onOtherThread([&] { monitor.unlock(); });
  EXPECT_TRUE(isFree(monitor));
}

TEST(Monitor, UnlockWithNobodyInsideDoesNothing) {
  NYXThreadSyncImpl monitor;
  for (int i = 0; i < 3; ++i) monitor.unlock();
  EXPECT_TRUE(isFree(monitor));
  monitor.lock();
  EXPECT_EQ(releaseAll(monitor), 1);
}

TEST(Monitor, ACopyIsANewFreeMonitor) {
  NYXThreadSyncImpl monitor;
  monitor.lock();
  NYXThreadSyncImpl copy(monitor);
  EXPECT_TRUE(isFree(copy));
  monitor.unlock();
}

TEST(Monitor, AssignmentKeepsEachMonitorAsItIs) {
  NYXThreadSyncImpl held;
  NYXThreadSyncImpl other;
  held.lock();
  held = other;
  other = held;
  EXPECT_TRUE(isFree(other));
  EXPECT_EQ(releaseAll(held), 1);
}

TEST(Monitor, LeavesItsEventOpen) {
  const HandleBaseline handles;
  for (int i = 0; i < 10; ++i) NYXThreadSyncImpl();
  EXPECT_EQ(handles.growth(), 10);
}

TEST(Monitor, TracesOnlyWhatItThrows) {
  NYXThreadSyncImpl monitor;
  const TraceScope trace("=ALL");
  const RecordingHandler log("NYXThreadSyncImpl");
  {
    const Synchronize guard(&monitor);
    monitor.wait(0);
    monitor.notifyAll();
  }
  EXPECT_TRUE(log.records().empty());
  EXPECT_THROW(monitor.wait(), NYXException);
  ASSERT_EQ(log.records().size(), 1U);
  EXPECT_EQ(log.records()[0].type, LogRecordType::THROWING);
  EXPECT_EQ(log.records()[0].methodName, "wait");
}

// The busy thread does something slow in the monitor and takes it again the moment it has left it. The one that was
// woken has to get a processor first, which it shares with threads that never rest.
TEST(Monitor, AThreadThatTakesItAgainAndAgainStepsAsideForOneThatWaits) {
  constexpr int kTurns = 20;
  constexpr int kSpinners = 8;
  constexpr int kMostAtOnce = 500;
  NYXThreadSyncImpl monitor;
  int taken = 0;
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  threads.emplace_back([&] {
    SetThreadAffinityMask(GetCurrentThread(), 2);
    while (!stop) {
      const Synchronize guard(&monitor);
      ++taken;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  for (int i = 0; i < kSpinners; ++i) {
    threads.emplace_back([&] {
      SetThreadAffinityMask(GetCurrentThread(), 1);
      while (!stop) continue;
    });
  }
  int longest = 0;
  const DWORD_PTR all = SetThreadAffinityMask(GetCurrentThread(), 1);
  for (int i = 0; i < kTurns; ++i) {
    monitor.lock();
    const int before = taken;
    monitor.unlock();
    while (monitor.tryLock()) monitor.unlock();
    const Synchronize guard(&monitor);
    longest = std::max(longest, taken - before);
  }
  stop = true;
  SetThreadAffinityMask(GetCurrentThread(), all);
  for (std::thread& thread : threads) thread.join();
  EXPECT_LT(longest, kMostAtOnce);
}

// Each round all waiters must see the new round, and the notifier that all have seen it. One wake-up lost in either
// direction stops the test for good.
TEST(Monitor, ManyWaitersLoseNoWakeUpInAHundredThousandRounds) {
  constexpr int kRounds = 100'000;
  constexpr int kWaiters = 4;
  setTestLimit(std::chrono::minutes(5));
  NYXThreadSyncImpl monitor;
  int round = 0;
  int arrived = 0;
  std::vector<std::thread> waiters;
  for (int i = 0; i < kWaiters; ++i) {
    waiters.emplace_back([&] {
      const Synchronize guard(&monitor);
      for (int seen = 0; seen < kRounds; ++seen) {
        while (round == seen) monitor.wait();
        if (++arrived == kWaiters) monitor.notifyAll();
      }
    });
  }
  {
    const Synchronize guard(&monitor);
    while (round < kRounds) {
      arrived = 0;
      ++round;
      monitor.notifyAll();
      while (arrived < kWaiters) monitor.wait();
    }
  }
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(round, kRounds);
  EXPECT_TRUE(isFree(monitor));
}

}  // namespace
}  // namespace tessel::test
