// Launching a child when the system refuses one of its calls, and what those calls are given.
#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <tuple>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>

#include "support/Handles.h"
#include "support/ImportHook.h"
#include "support/LaunchedProcess.h"
#include "support/RareError.h"
#include "support/Thrown.h"

namespace tessel::test {
namespace {

using PipeHook = ImportHook<"CreatePipe", decltype(CreatePipe)>;
using InheritHook = ImportHook<"SetHandleInformation", decltype(SetHandleInformation)>;
using LaunchHook = ImportHook<"CreateProcessA", decltype(CreateProcessA)>;
using WaitHook = ImportHook<"WaitForSingleObject", decltype(WaitForSingleObject)>;
using CodeHook = ImportHook<"GetExitCodeProcess", decltype(GetExitCodeProcess)>;

// The call of that number fails, the others reach the system.
template <class Hook, class... Arguments>
auto failing(Hook& hook, unsigned number) {
  return [&hook, number](Arguments... arguments) -> BOOL {
    if (hook.calls() != number) return hook.callOriginal(arguments...);
    SetLastError(kRareError);
    return FALSE;
  };
}

bool isInheritable(HANDLE handle) {
  DWORD flags = 0;
  EXPECT_NE(GetHandleInformation(handle, &flags), 0);
  return (flags & HANDLE_FLAG_INHERIT) != 0;
}

class ProcessFaults : public testing::Test {
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

std::string constructionFailure() {
  return thrownBy<NYXException>([] { const LaunchedProcess process(child({"do-exit", "0"})); });
}

TEST_F(ProcessFaults, APipeThatCannotBeMadeIsReportedAndNothingStaysOpen) {
  const std::array<const char*, 3> keys{"KTBNV0001_CREATE_PIPE_STDOUT", "KTBNV0003_CREATE_PIPE_STDIN",
                                        "KTBNV0005_CREATE_PIPE_STDERR"};
  const HandleBaseline handles;
  for (unsigned i = 0; i < keys.size(); ++i) {
    PipeHook hook;
    hook.replaceWith(failing<PipeHook, PHANDLE, PHANDLE, LPSECURITY_ATTRIBUTES, DWORD>(hook, i + 1));
    EXPECT_EQ(constructionFailure(), messageText(keys[i], kRareText));
    EXPECT_EQ(hook.calls(), i + 1);
    EXPECT_EQ(handles.growth(), 0);
  }
}

TEST_F(ProcessFaults, AnEndThatCannotBeKeptFromChildrenIsReportedAndNothingStaysOpen) {
  const std::array<const char*, 6> keys{"KTBNV0002_HANDLE_INFO_STDOUT", "KTBNV0004_HANDLE_INFO_STDIN",
                                        "KTBNV0006_HANDLE_INFO_STDERR", "KTBNV0002_HANDLE_INFO_STDOUT",
                                        "KTBNV0004_HANDLE_INFO_STDIN",  "KTBNV0006_HANDLE_INFO_STDERR"};
  const HandleBaseline handles;
  for (unsigned i = 0; i < keys.size(); ++i) {
    InheritHook hook;
    hook.replaceWith(failing<InheritHook, HANDLE, DWORD, DWORD>(hook, i + 1));
    EXPECT_EQ(constructionFailure(), messageText(keys[i], kRareText));
    EXPECT_EQ(hook.calls(), i + 1);
    EXPECT_EQ(handles.growth(), 0);
  }
}

TEST_F(ProcessFaults, PipesAreMadeInheritableWithTheSystemsBufferSize) {
  PipeHook hook;
  hook.replaceWith([&](PHANDLE readEnd, PHANDLE writeEnd, LPSECURITY_ATTRIBUTES security, DWORD size) {
    EXPECT_EQ(security->nLength, 24U);
    EXPECT_EQ(security->lpSecurityDescriptor, nullptr);
    EXPECT_EQ(security->bInheritHandle, TRUE);
    EXPECT_EQ(size, 0U);
    return hook.callOriginal(readEnd, writeEnd, security, size);
  });
  const LaunchedProcess process(child({"do-exit", "0"}));
  EXPECT_EQ(hook.calls(), 3U);
}

TEST_F(ProcessFaults, TheParentsEndsAreKeptFromChildrenFirst) {
  std::vector<HANDLE> kept;
  InheritHook hook;
  hook.replaceWith([&](HANDLE handle, DWORD mask, DWORD flags) {
    EXPECT_EQ(mask, static_cast<DWORD>(HANDLE_FLAG_INHERIT));
    EXPECT_EQ(flags, 0U);
    kept.push_back(handle);
    return hook.callOriginal(handle, mask, flags);
  });
  LaunchedProcess process(child({"do-exit", "0"}));
  ASSERT_EQ(kept.size(), 6U);
  EXPECT_EQ(kept[0], process.getOutputStream());
  EXPECT_EQ(kept[1], process.getInputStream());
  EXPECT_EQ(kept[2], process.getErrorStream());
}

struct Launch {
  std::string name;
  std::string line;
  std::string directory;
  bool hasDirectory;
};

// What the system is asked to launch; nothing is launched.
Launch launchOf(LaunchedProcess& process) {
  Launch launch{};
  LaunchHook hook;
  hook.replaceWith([&](LPCSTR name, LPSTR line, LPSECURITY_ATTRIBUTES ofProcess, LPSECURITY_ATTRIBUTES ofThread,
                       BOOL inherit, DWORD flags, LPVOID environment, LPCSTR directory, LPSTARTUPINFOA startup,
                       LPPROCESS_INFORMATION) {
    launch = {name, line, directory ? directory : "", directory != nullptr};
    EXPECT_EQ(ofProcess, nullptr);
    EXPECT_EQ(ofThread, nullptr);
    EXPECT_EQ(inherit, TRUE);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(environment, nullptr);
    EXPECT_EQ(startup->cb, sizeof(STARTUPINFOA));
    EXPECT_EQ(startup->dwFlags, static_cast<DWORD>(STARTF_USESTDHANDLES));
    for (const HANDLE stream : {startup->hStdInput, startup->hStdOutput, startup->hStdError}) {
      EXPECT_TRUE(isInheritable(stream));
    }
    SetLastError(kRareError);
    return FALSE;
  });
  EXPECT_THROW(process.start(), NYXException);
  return launch;
}

TEST_F(ProcessFaults, TheSystemIsGivenNameLineAndDirectory) {
  LaunchedProcess process({"prog", "C:\\dir x\\f", "-v"}, "D:\\work here");
  const Launch launch = launchOf(process);
  EXPECT_EQ(launch.name, "prog.exe");
  EXPECT_EQ(launch.line, R"("prog.exe" C:"\dir x\f" "-v")");
  EXPECT_EQ(launch.directory, "D:\\work here");
}

TEST_F(ProcessFaults, WithoutADirectoryTheSystemIsGivenNone) {
  LaunchedProcess process({"tool.EXE"});
  const Launch launch = launchOf(process);
  EXPECT_EQ(launch.name, "tool.EXE.exe");
  EXPECT_EQ(launch.line, "\"tool.EXE.exe\" ");
  EXPECT_FALSE(launch.hasDirectory);
}

// Its limit is its own affair.
TEST_F(ProcessFaults, TheSystemIsGivenTheWholeLineHoweverLongItIs) {
  for (const std::size_t length : {32766U, 32767U, 100000U}) {
    const std::string argument(length - std::string(R"("prog.exe" "")").size(), 'x');
    LaunchedProcess process({"prog", argument});
    EXPECT_TRUE(launchOf(process).line == R"("prog.exe" ")" + argument + '"') << length;
  }
}

TEST_F(ProcessFaults, ACommandLineBeyondTheSystemsLimitIsPassedOnAndItsRefusalReported) {
  const std::string argument(40000, 'x');
  LaunchedProcess process(child({argument}));
  LaunchHook hook;
  hook.failOnce(ERROR_FILENAME_EXCED_RANGE);
  SetLastError(ERROR_FILENAME_EXCED_RANGE);
  const std::string text = NYXUtils::getLastErrorMessage();
  const std::string line = '"' + kChildProgram + "\" \"" + argument + '"';
  EXPECT_EQ(thrownBy<NYXException>([&] { process.start(); }),
            messageText("KTBNV0007_UNABLE_TO_CREATE_PROCESS", line, "206", text));
}

TEST_F(ProcessFaults, AChildThatCannotBeLaunchedCanBeStartedAgain) {
  const HandleBaseline handles;
  {
    LaunchedProcess process(child({"do-exit", "6"}));
    const std::string line = '"' + kChildProgram + R"(" "do-exit" "6")";
    {
      LaunchHook hook;
      hook.failOnce(kRareError);
      EXPECT_EQ(thrownBy<NYXException>([&] { process.start(); }),
                messageText("KTBNV0007_UNABLE_TO_CREATE_PROCESS", line, kRareText, kRareText));
    }
    EXPECT_EQ(handles.growth(), 6);
    EXPECT_EQ(process.waitForProcess(), -1);
    process.start();
    EXPECT_EQ(process.waitForProcess(), 6);
  }
  EXPECT_EQ(handles.growth(), 0);
}

TEST_F(ProcessFaults, AnEndThatCannotBeGivenToTheChildIsALaunchThatFailed) {
  for (unsigned number = 1; number <= 3; ++number) {
    LaunchedProcess process(child({"do-exit", "6"}));
    {
      InheritHook hook;
      hook.replaceWith(failing<InheritHook, HANDLE, DWORD, DWORD>(hook, number));
      LaunchHook launches;
      EXPECT_EQ(thrownBy<NYXException>([&] { process.start(); }),
                messageText("KTBNV0007_UNABLE_TO_CREATE_PROCESS", '"' + kChildProgram + R"(" "do-exit" "6")", kRareText,
                            kRareText));
      EXPECT_EQ(launches.calls(), 0U);
    }
    process.start();
    EXPECT_EQ(process.waitForProcess(), 6);
  }
}

TEST_F(ProcessFaults, AnEndThatCannotBeTakenBackDoesNotFailALaunchThatWorked) {
  for (unsigned number = 4; number <= 6; ++number) {
    LaunchedProcess process(child({"do-exit", "6"}));
    InheritHook hook;
    hook.replaceWith(failing<InheritHook, HANDLE, DWORD, DWORD>(hook, number));
    process.start();
    EXPECT_EQ(hook.calls(), 6U);
    EXPECT_EQ(process.waitForProcess(), 6);
  }
}

// Whatever is started meanwhile by other means inherits nothing.
TEST_F(ProcessFaults, TheChildsEndsAreInheritableOnlyWhileItIsLaunched) {
  LaunchedProcess other(child({"do-exit", "0"}));
  std::vector<HANDLE> ends;
  LaunchedProcess process(child({"do-exit", "0"}));
  LaunchHook hook;
  hook.replaceWith([&](LPCSTR, LPSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID, LPCSTR,
                       LPSTARTUPINFOA startup, LPPROCESS_INFORMATION) {
    for (const HANDLE end : ends) EXPECT_FALSE(isInheritable(end));
    ends = {startup->hStdInput, startup->hStdOutput, startup->hStdError};
    for (const HANDLE end : ends) EXPECT_TRUE(isInheritable(end));
    return FALSE;
  });
  EXPECT_THROW(other.start(), NYXException);
  EXPECT_THROW(process.start(), NYXException);
  EXPECT_EQ(hook.calls(), 2U);
  for (const HANDLE end : ends) EXPECT_FALSE(isInheritable(end));
}

TEST_F(ProcessFaults, AfterTheStartOnlyTheChildHasItsWritingEnds) {
  LaunchedProcess process(child({"do-exit", "0"}));
  std::vector<HANDLE> ends;
  {
    LaunchHook hook;
    hook.replaceWith([&](auto... arguments) {
      const auto* startup = std::get<8>(std::tuple(arguments...));
      ends = {startup->hStdInput, startup->hStdOutput, startup->hStdError};
      return hook.callOriginal(arguments...);
    });
    process.start();
  }
  DWORD flags = 0;
  EXPECT_NE(GetHandleInformation(ends[0], &flags), 0);
  EXPECT_EQ(GetHandleInformation(ends[1], &flags), 0);
  EXPECT_EQ(GetHandleInformation(ends[2], &flags), 0);
  process.waitForProcess();
  EXPECT_EQ(GetHandleInformation(ends[0], &flags), 0);
}

TEST_F(ProcessFaults, AnExitCodeThatCannotBeReadIsTheOneKnownBefore) {
  LaunchedProcess process(child({"do-exit", "6"}));
  process.start();
  {
    CodeHook hook;
    hook.failAlways(kRareError);
    EXPECT_EQ(process.getExitCode(), -1);
    EXPECT_EQ(process.waitForProcess(), -1);
  }
  EXPECT_EQ(process.waitForProcess(), 6);
  CodeHook hook;
  hook.failAlways(kRareError);
  EXPECT_EQ(process.getExitCode(), 6);
  process.stop();
  EXPECT_EQ(process.getExitCode(), 6);
}

TEST_F(ProcessFaults, AWaitThatFailsIsNotReportedAndTheNextOneWorks) {
  LaunchedProcess process(child({"do-echo"}));
  process.start();
  {
    WaitHook hook;
    hook.failOnce(kRareError, WAIT_FAILED);
    EXPECT_EQ(process.waitForProcess(), 259);
  }
  DWORD written = 0;
  EXPECT_NE(WriteFile(process.getInputStream(), "x", 1, &written, nullptr), 0);  // its end is not known
  process.closeInputStream();
  EXPECT_EQ(process.waitForProcess(), 0);
}

}  // namespace
}  // namespace tessel::test
