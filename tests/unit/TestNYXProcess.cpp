// The life of a child process.
#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>
#include <tessel/NYXUtils.h>

#include "support/Handles.h"
#include "support/LaunchedProcess.h"
#include "support/Records.h"
#include "support/TempFolder.h"
#include "support/Thrown.h"
#include "support/TraceScope.h"
#include "support/Work.h"

namespace tessel::test {
namespace {

constexpr int kStillActive = 259;

std::string systemText(DWORD number) {
  SetLastError(number);
  return NYXUtils::getLastErrorMessage();
}

// The message about a program that cannot be started.
std::string refusal(const std::string& commandLine, DWORD number) {
  return messageText("KTBNV0007_UNABLE_TO_CREATE_PROCESS", commandLine, std::to_string(number), systemText(number));
}

std::string failureOf(NYXProcess& process) {
  return thrownBy<NYXException>([&] { process.start(); });
}

bool isGone(unsigned long id) {
  const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, id);
  if (!process) return true;
  const bool gone = WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
  CloseHandle(process);
  return gone;
}

bool writeTo(NYXProcess& process, const std::string& text) {
  DWORD written = 0;
  return WriteFile(process.getInputStream(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != 0;
}

TEST(Process, TheExitCodeIsThatOfTheChild) {
  for (const int code : {0, 1, 7, 255, 256, 259, 70000, -1}) {
    LaunchedProcess process(child({"do-exit", std::to_string(static_cast<unsigned>(code))}));
    process.start();
    EXPECT_EQ(process.waitForProcess(), code);
    EXPECT_EQ(process.getExitCode(), code);
    EXPECT_EQ(process.waitForProcess(), code);
  }
}

TEST(Process, BeforeItIsStartedThereIsNoExitCodeAndNoNumber) {
  LaunchedProcess process(child({"do-exit", "0"}));
  EXPECT_EQ(process.getExitCode(), -1);
  EXPECT_EQ(process.waitForProcess(), -1);
  EXPECT_EQ(process.getProcessId(), 0U);
  process.stop();
  EXPECT_EQ(process.getExitCode(), -1);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
}

TEST(Process, WaitingBeforeTheStartDoesNotWaitForTheReaders) {
  LaunchedProcess process(child({"do-exit", "0"}));
  Collector output;
  process.registerOutputStreamListener(output);
  EXPECT_EQ(process.waitForProcess(), -1);
}

TEST(Process, ItsNumberIsTheSystems) {
  LaunchedProcess process(child({"do-sleep"}));
  process.start();
  const HANDLE opened = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process.getProcessId());
  EXPECT_EQ(GetProcessId(opened), process.getProcessId());
  CloseHandle(opened);
  const unsigned long id = process.getProcessId();
  process.stop();
  EXPECT_TRUE(isGone(id));
  EXPECT_EQ(process.getProcessId(), id);
}

TEST(Process, TheNumberOfTheCallerIsTheSystems) {
  EXPECT_EQ(NYXProcess::getCurrentProcessId(), GetCurrentProcessId());
  EXPECT_EQ(NYXProcessImpl::getCurrentProcessId(), GetCurrentProcessId());
}

TEST(Process, StoppingEndsTheChildWithCodeZero) {
  LaunchedProcess process(child({"do-sleep"}));
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  ASSERT_TRUE(output.waitForBytes(5));
  EXPECT_EQ(process.getExitCode(), kStillActive);
  process.stop();
  EXPECT_EQ(process.getExitCode(), 0);
  EXPECT_EQ(process.waitForProcess(), 0);
  process.stop();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.data(), "ready");
}

TEST(Process, StoppingAChildThatHasEndedKeepsItsCode) {
  LaunchedProcess process(child({"do-exit", "7"}));
  process.start();
  EXPECT_EQ(process.waitForProcess(), 7);
  process.stop();
  EXPECT_EQ(process.getExitCode(), 7);
  EXPECT_EQ(process.waitForProcess(), 7);
}

TEST(Process, AChildThatDiesByAnExceptionReportsItsNumber) {
  LaunchedProcess process(child({"do-crash"}));
  process.start();
  EXPECT_EQ(static_cast<unsigned>(process.waitForProcess()), 0xC0000005U);
}

TEST(Process, ASecondStartNamesTheProgramAndLeavesTheChildAlone) {
  LaunchedProcess process(child({"do-echo"}));
  process.start();
  const std::string expected = messageText("KTBNV0179_PROCESS_ALREADY_STARTED", kChildProgram);
  EXPECT_EQ(failureOf(process), expected);
  process.closeInputStream();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(failureOf(process), expected);
  process.stop();
  EXPECT_EQ(failureOf(process), expected);
}

TEST(Process, AMissingProgramIsReportedWithLineNumberAndText) {
  LaunchedProcess process({"C:\\nowhere\\tool", "a b"});
  EXPECT_EQ(failureOf(process), refusal(R"("C:\nowhere\tool.exe" "a b")", ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(process.getExitCode(), -1);
}

TEST(Process, AStartThatFailsIsTraced) {
  const TraceScope trace("NYXProcessImpl=FLOW");
  const RecordingHandler log("NYXProcessImpl");
  LaunchedProcess process({"no-such-program"});
  EXPECT_THROW(process.start(), NYXException);
  const std::vector<Recorded> thrown = recordsOf(log, LogRecordType::THROWING);
  ASSERT_EQ(thrown.size(), 1U);
  EXPECT_EQ(thrown[0].methodName, "start");
}

TEST(Process, ExeIsAppendedUnlessTheNameEndsInExactlyThat) {
  const std::vector<std::pair<std::string, std::string>> names{{"no-such", "no-such.exe"},
                                                               {"no-such.EXE", "no-such.EXE.exe"},
                                                               {"no-such.Exe", "no-such.Exe.exe"},
                                                               {"no-such.com", "no-such.com.exe"},
                                                               {"no-such.exe", "no-such.exe"},
                                                               {"x.exe", "x.exe"},
                                                               {".exe", ".exe.exe"},
                                                               {"exe", "exe.exe"},
                                                               {"abcd", "abcd.exe"},
                                                               {"", ".exe"},
                                                               {"no-such.exe ", "no-such.exe .exe"}};
  for (const auto& [program, expected] : names) {
    LaunchedProcess process({program});
    EXPECT_EQ(failureOf(process), refusal('"' + expected + "\" ", ERROR_FILE_NOT_FOUND)) << program;
  }
}

TEST(Process, NoArgumentsAtAllAreAProgramThatCannotBeFound) {
  for (const int count : {0, 3}) {
    NYXProcessImpl process(count, nullptr);
    const std::string line = count == 0 ? "\".exe\" " : R"(".exe" "" "")";
    EXPECT_EQ(failureOf(process), refusal(line, ERROR_FILE_NOT_FOUND));
  }
  std::array<char*, 1> null{nullptr};
  NYXProcessImpl process(1, null.data());
  EXPECT_EQ(failureOf(process), refusal("\".exe\" ", ERROR_FILE_NOT_FOUND));
}

TEST(Process, TheSearchPathIsNotLookedThrough) {
  LaunchedProcess process({"cmd"});
  EXPECT_EQ(failureOf(process), refusal("\"cmd.exe\" ", ERROR_FILE_NOT_FOUND));
}

// Which error it is differs between the systems.
DWORD bareError(const std::string& program) {
  STARTUPINFOA start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  EXPECT_EQ(CreateProcessA(program.c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process),
            FALSE);
  return GetLastError();
}

TEST(Process, ADirectoryIsNoProgram) {
  const TempFolder folder;
  const std::string path = (folder.path() / "folder.exe").string();
  std::filesystem::create_directory(path);
  LaunchedProcess process({path});
  EXPECT_EQ(failureOf(process), refusal('"' + path + "\" ", bareError(path)));
}

TEST(Process, AFileThatIsNoProgramIsReported) {
  const TempFolder folder;
  const std::string path = folder.write("text.exe", "this is no program").string();
  LaunchedProcess process({path});
  EXPECT_EQ(failureOf(process), refusal('"' + path + "\" ", bareError(path)));
}

TEST(Process, ANameWithBlanksIsFound) {
  const TempFolder folder;
  const std::filesystem::path program = folder.path() / "a folder" / "a child.exe";
  std::filesystem::create_directory(program.parent_path());
  std::filesystem::copy_file(kChildProgram, program);
  LaunchedProcess process({(program.parent_path() / "a child").string(), "do-exit", "4"});
  process.start();
  EXPECT_EQ(process.waitForProcess(), 4);
}

TEST(Process, TheChildWorksInTheDirectoryThatItWasGiven) {
  const TempFolder folder;
  LaunchedProcess process(child({"do-print-directory"}), folder.path().string());
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_TRUE(std::filesystem::equivalent(output.data(), folder.path())) << output.data();
}

TEST(Process, WithoutADirectoryTheChildWorksInTheCallers) {
  LaunchedProcess process(child({"do-print-directory"}));
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_TRUE(std::filesystem::equivalent(output.data(), std::filesystem::current_path())) << output.data();
}

TEST(Process, AMissingDirectoryIsReported) {
  LaunchedProcess process(child({"do-exit", "0"}), "C:\\nowhere at all");
  EXPECT_EQ(failureOf(process), refusal('"' + kChildProgram + R"(" "do-exit" "0")", ERROR_DIRECTORY));
}

TEST(Process, AChildThatReadsToTheEndOfItsInputEndsWhenThatIsClosed) {
  LaunchedProcess process(child({"do-echo"}));
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  EXPECT_TRUE(writeTo(process, "to and "));
  EXPECT_TRUE(writeTo(process, "fro"));
  EXPECT_TRUE(output.waitForBytes(10));
  EXPECT_EQ(process.getExitCode(), kStillActive);
  process.closeInputStream();
  process.closeInputStream();
  EXPECT_EQ(process.getInputStream(), nullptr);
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.data(), "to and fro");
}

TEST(Process, InputWrittenBeforeTheStartIsThere) {
  LaunchedProcess process(child({"do-echo"}));
  Collector output;
  process.registerOutputStreamListener(output);
  EXPECT_TRUE(writeTo(process, "early"));
  process.closeInputStream();
  process.start();
  EXPECT_EQ(process.waitForProcess(), 0);
  EXPECT_EQ(output.data(), "early");
}

TEST(Process, WritingToAChildThatHasEndedFails) {
  LaunchedProcess waitedFor(child({"do-exit", "0"}));
  waitedFor.start();
  waitedFor.waitForProcess();
  EXPECT_FALSE(writeTo(waitedFor, "x"));
  LaunchedProcess stopped(child({"do-sleep"}));
  stopped.start();
  EXPECT_TRUE(writeTo(stopped, "x"));
  stopped.stop();
  EXPECT_FALSE(writeTo(stopped, "x"));
}

TEST(Process, AWriterThatIsBlockedByAChildThatDoesNotReadFailsWhenTheChildEnds) {
  LaunchedProcess process(child({"do-sleep"}));
  Collector output;
  process.registerOutputStreamListener(output);
  process.start();
  ASSERT_TRUE(output.waitForBytes(5));
  Event full;
  Work writer([&] {
    const std::string block(10000, 'x');
    full.set();
    while (writeTo(process, block)) continue;
    return static_cast<long>(GetLastError());
  });
  NYXThreadImpl thread(&writer);
  thread.start();
  ASSERT_TRUE(full.wait());
  process.stop();
  thread.join();
  const long error = thread.getExitCode();
  EXPECT_TRUE(error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE) << error;
}

TEST(Process, TheEndOfTheObjectDoesNotStopTheChild) {
  HANDLE opened = nullptr;
  {
    LaunchedProcess process(child({"do-sleep"}));
    process.start();
    opened = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, process.getProcessId());
  }
  EXPECT_EQ(WaitForSingleObject(opened, 0), static_cast<DWORD>(WAIT_TIMEOUT));
  TerminateProcess(opened, 0);
  WaitForSingleObject(opened, INFINITE);
  CloseHandle(opened);
}

TEST(Process, TheEndOfTheObjectEndsTheChildsInput) {
  HANDLE opened = nullptr;
  {
    LaunchedProcess process(child({"do-close-streams"}));
    process.start();
    opened = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, process.getProcessId());
  }
  EXPECT_EQ(WaitForSingleObject(opened, 30000), WAIT_OBJECT_0);
  DWORD code = 0;
  GetExitCodeProcess(opened, &code);
  EXPECT_EQ(code, 3U);
  CloseHandle(opened);
}

TEST(Process, AnObjectThatWasNeverStartedLeavesNothingOpen) {
  { const LaunchedProcess first(child({"do-exit", "0"})); }  // what is made once in the process exists now
  const HandleBaseline handles;
  {
    const LaunchedProcess process(child({"do-exit", "0"}));
    EXPECT_EQ(handles.growth(), 6);
  }
  EXPECT_EQ(handles.growth(), 0);
}

TEST(Process, WithoutListenersNothingStaysOpen) {
  {
    LaunchedProcess first(child({"do-exit", "0"}));
    first.start();
    first.waitForProcess();
  }
  const HandleBaseline handles;
  {
    LaunchedProcess process(child({"do-exit", "0"}));
    process.start();
    EXPECT_EQ(handles.growth(), 6);  // four pipe ends, process and thread
    process.waitForProcess();
    EXPECT_EQ(handles.growth(), 5);  // the child's end of its input went
    process.stop();
    EXPECT_EQ(handles.growth(), 3);  // process and thread
  }
  EXPECT_EQ(handles.growth(), 0);
}

}  // namespace
}  // namespace tessel::test
