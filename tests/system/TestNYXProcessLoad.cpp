// Many children, several at once, and what stays behind.
#include <windows.h>

#include <tlhelp32.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>

#include "support/Handles.h"
#include "support/LaunchedProcess.h"
#include "support/Watchdog.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

long openThreads() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  long count = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
    count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
  }
  CloseHandle(snapshot);
  return count;
}

void launchAndRead() {
  LaunchedProcess process(child({"do-say", "to output", "to error"}));
  AlphabetCounter output;
  process.registerOutputStreamListener(output);
  process.start();
  ASSERT_EQ(process.waitForProcess(), 0);
  ASSERT_EQ(output.bytes(), 9U);
  process.stop();
}

TEST(ProcessLoad, FiveHundredLaunchesLeaveTheHandlesOfTheirReadersAndNothingElse) {
  constexpr int kLaunches = 500;
  setTestLimit(std::chrono::seconds(300));
  ASSERT_NO_FATAL_FAILURE(launchAndRead());  // what is made once in the process exists now
  const HandleBaseline handles;
  const long threads = openThreads();
  for (int i = 0; i < kLaunches; ++i) ASSERT_NO_FATAL_FAILURE(launchAndRead());
  EXPECT_EQ(openThreads(), threads);
  EXPECT_EQ(handles.growth(), kLaunches);
}

// The run-time's events are as many as the locks for which threads have waited, however often they did.
TEST(ProcessLoad, FiveHundredLaunchesWithBothStreamsLeaveNoThread) {
  constexpr int kLaunches = 500;
  constexpr int kLocksOfTheRunTime = 32;
  setTestLimit(std::chrono::seconds(300));
  ASSERT_NO_FATAL_FAILURE(launchAndRead());  // what is made once in the process exists now
  const HandleBaseline handles;
  const long threads = openThreads();
  for (int i = 0; i < kLaunches; ++i) {
    LaunchedProcess process(child({"do-say", "to output", "to error"}));
    AlphabetCounter output;
    AlphabetCounter error;
    process.registerOutputStreamListener(output);
    process.registerErrorStreamListener(error);
    process.start();
    ASSERT_EQ(process.waitForProcess(), 0);
    ASSERT_EQ(output.bytes(), 9U);
    ASSERT_EQ(error.bytes(), 8U);
    process.stop();
  }
  EXPECT_EQ(openThreads(), threads);
  EXPECT_EQ(handles.growth(), 2 * kLaunches);
  EXPECT_LT(handles.growthWithLocks(), 2 * kLaunches + kLocksOfTheRunTime);
}

// A child that inherited the other's ends would keep the other's output from ending.
TEST(ProcessInheritance, TheOutputOfAChildEndsWithItWhateverElseWasStarted) {
  for (const bool longLivedFirst : {true, false}) {
    LaunchedProcess longLived(child({"do-echo"}));
    LaunchedProcess brief(child({"do-say", "x", ""}));
    Collector output;
    brief.registerOutputStreamListener(output);
    brief.registerErrorStreamListener(output);
    if (longLivedFirst) longLived.start();
    brief.start();
    if (!longLivedFirst) longLived.start();
    EXPECT_EQ(brief.waitForProcess(), 0);
    EXPECT_EQ(output.data(), "x");
    EXPECT_EQ(longLived.getExitCode(), 259);
    longLived.closeInputStream();
    EXPECT_EQ(longLived.waitForProcess(), 0);
  }
}

// Each reads to the end of its input: with another's writing end in its hands it would never see that.
TEST(ProcessInheritance, TheInputOfAChildEndsWhenItIsClosedWhicheverOrder) {
  for (const bool firstEndsFirst : {true, false}) {
    LaunchedProcess first(child({"do-echo"}));
    LaunchedProcess second(child({"do-echo"}));
    first.start();
    second.start();
    LaunchedProcess& ending = firstEndsFirst ? first : second;
    LaunchedProcess& other = firstEndsFirst ? second : first;
    ending.closeInputStream();
    EXPECT_EQ(ending.waitForProcess(), 0);
    EXPECT_EQ(other.getExitCode(), 259);
    other.closeInputStream();
    EXPECT_EQ(other.waitForProcess(), 0);
  }
}

TEST(ProcessInheritance, ChildrenStartedByManyThreadsAtOnceInheritNothingOfEachOther) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 10;
  setTestLimit(std::chrono::seconds(120));
  std::vector<std::unique_ptr<Work>> works;
  std::vector<std::unique_ptr<NYXThreadImpl>> threads;
  for (int i = 0; i < kThreads; ++i) {
    works.push_back(std::make_unique<Work>([] {
      for (int round = 0; round < kRounds; ++round) {
        LaunchedProcess process(child({"do-echo"}));
        Collector output;
        process.registerOutputStreamListener(output);
        process.registerErrorStreamListener(output);
        process.start();
        process.closeInputStream();
        if (process.waitForProcess() != 0) return 1;
      }
      return 0;
    }));
    threads.push_back(std::make_unique<NYXThreadImpl>(works.back().get()));
    threads.back()->start();
  }
  for (const auto& thread : threads) {
    thread->join();
    EXPECT_EQ(thread->getExitCode(), 0);
  }
}

}  // namespace
}  // namespace tessel::test
