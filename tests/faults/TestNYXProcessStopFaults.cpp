// Stopping a child when the system refuses one of the calls, or the child does not end.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

#include <tessel/NYXException.h>

#include "support/Handles.h"
#include "support/ImportHook.h"
#include "support/LaunchedProcess.h"
#include "support/RareError.h"

namespace tessel::test {
namespace {

using CloseHook = ImportHook<"CloseHandle", decltype(CloseHandle)>;
using LaunchHook = ImportHook<"CreateProcessA", decltype(CreateProcessA)>;
using WaitHook = ImportHook<"WaitForSingleObject", decltype(WaitForSingleObject)>;
using TerminateHook = ImportHook<"TerminateProcess", decltype(TerminateProcess)>;

class ProcessStopFaults : public testing::Test {
 protected:
  // What a process opens with its first failure and its first child stays.
  static void SetUpTestSuite() {
    LaunchedProcess missing({"no-such-program"});
    EXPECT_THROW(missing.start(), NYXException);
    LaunchedProcess first(child({"do-exit", "0"}));
    first.start();
    first.waitForProcess();
  }
};

TEST_F(ProcessStopFaults, AChildThatCannotBeTerminatedIsGivenUp) {
  const HandleBaseline handles;
  {
    LaunchedProcess process(child({"do-echo"}));
    process.start();
    {
      TerminateHook hook;
      hook.replaceWith([&](HANDLE, UINT code) {
        EXPECT_EQ(code, 0U);
        SetLastError(kRareError);
        return FALSE;
      });
      process.stop();
      process.stop();
      EXPECT_EQ(hook.calls(), 1U);
    }
    EXPECT_EQ(process.getExitCode(), 259);
    EXPECT_EQ(process.waitForProcess(), 259);
    process.closeInputStream();
  }
  EXPECT_EQ(handles.growth(), 0);
}

TEST_F(ProcessStopFaults, StoppingWaitsForTheEndForABoundedTime) {
  LaunchedProcess process(child({"do-echo"}));
  process.start();
  WaitHook hook;
  DWORD limit = 0;
  hook.replaceWith([&](HANDLE handle, DWORD milliseconds) {
    limit = milliseconds;
    return hook.callOriginal(handle, milliseconds);
  });
  process.stop();
  EXPECT_EQ(limit, 5000U);
  EXPECT_EQ(process.getExitCode(), 0);
}

TEST_F(ProcessStopFaults, AChildThatDoesNotEndInTimeIsGivenUp) {
  const HandleBaseline handles;
  {
    LaunchedProcess process(child({"do-echo"}));
    process.start();
    {
      TerminateHook terminate;
      terminate.replaceWith([](HANDLE, UINT) { return TRUE; });
      WaitHook hook;
      hook.replaceWith([](HANDLE, DWORD milliseconds) -> DWORD {
        EXPECT_EQ(milliseconds, 5000U);
        return WAIT_TIMEOUT;
      });
      process.stop();
      process.stop();
      EXPECT_EQ(hook.calls(), 1U);
    }
    EXPECT_EQ(process.getExitCode(), 259);
    process.closeInputStream();
    EXPECT_EQ(process.waitForProcess(), 259);
  }
  EXPECT_EQ(handles.growth(), 0);
}

TEST_F(ProcessStopFaults, AWaitThatFailsInsideAStopKeepsTheExitCode) {
  LaunchedProcess process(child({"do-echo"}));
  process.start();
  {
    WaitHook hook;
    hook.replaceWith([&](HANDLE handle, DWORD milliseconds) -> DWORD {
      hook.callOriginal(handle, milliseconds);
      SetLastError(kRareError);
      return WAIT_FAILED;
    });
    process.stop();
  }
  EXPECT_EQ(process.getExitCode(), 0);
  EXPECT_EQ(process.waitForProcess(), 0);
}

TEST_F(ProcessStopFaults, AHandleThatCannotBeClosedInsideAStopIsGivenUp) {
  LaunchedProcess process(child({"do-echo"}));
  PROCESS_INFORMATION opened{};
  {
    LaunchHook hook;
    hook.replaceWith([&](auto... arguments) {
      const BOOL launched = hook.callOriginal(arguments...);
      opened = *std::get<9>(std::tuple(arguments...));
      return launched;
    });
    process.start();
  }
  std::vector<HANDLE> closed;
  {
    CloseHook hook;
    hook.replaceWith([&](HANDLE handle) {
      closed.push_back(handle);
      hook.callOriginal(handle);
      SetLastError(kRareError);
      return FALSE;
    });
    process.stop();
    process.stop();
  }
  EXPECT_EQ(std::count(closed.begin(), closed.end(), opened.hProcess), 1);
  EXPECT_EQ(std::count(closed.begin(), closed.end(), opened.hThread), 1);
  EXPECT_EQ(process.getExitCode(), 0);
  EXPECT_EQ(process.waitForProcess(), 0);
}

// Everything is closed all the same, and nobody is told.
TEST_F(ProcessStopFaults, HandlesThatCannotBeClosedDisturbNeitherStartNorInputNorEnd) {
  const HandleBaseline handles;
  {
    LaunchedProcess process(child({"do-exit", "3"}));
    CloseHook hook;
    hook.replaceWith([&](HANDLE handle) {
      hook.callOriginal(handle);
      SetLastError(kRareError);
      return FALSE;
    });
    process.start();
    const unsigned closedByStart = hook.calls();
    EXPECT_EQ(closedByStart, 2U);
    process.closeInputStream();
    EXPECT_EQ(hook.calls(), closedByStart + 1);
    EXPECT_EQ(process.getInputStream(), nullptr);
    EXPECT_EQ(process.waitForProcess(), 3);
    EXPECT_EQ(hook.calls(), closedByStart + 2);
  }
  EXPECT_EQ(handles.growth(), 0);
}

}  // namespace
}  // namespace tessel::test
