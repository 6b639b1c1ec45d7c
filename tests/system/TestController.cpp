// The example that keeps a program running: its program is killed, and each decision and each event is looked at.
#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <tessel/FileLock.h>

#include "support/Files.h"
#include "support/LaunchedProcess.h"
#include "support/NamedEvent.h"
#include "support/TempFolder.h"

namespace tessel::test {
namespace {

using Texts = std::vector<std::string>;

// As the system names it.
const std::string kProgram = std::filesystem::path(kChildProgram).make_preferred().string();

constexpr int kRunsAlready = 3;
constexpr int kGaveUp = 4;

Texts controllerWords(const TempFolder& folder, const std::string& settings, const Texts& program) {
  Texts words{TESSEL_CONTROLLER, folder.write("controller.properties", settings).string(),
              (folder.path() / "work").string()};
  words.insert(words.end(), program.begin(), program.end());
  for (std::size_t i = 1; i < words.size(); ++i) words[i] = NYXProcess::quoteArgument(words[i]);
  return words;
}

class ControllerProcess {
 public:
  ControllerProcess(const TempFolder& folder, const std::string& settings, const Texts& program)
      : folder_((folder.path() / "work").string()), process_(controllerWords(folder, settings, program)) {
    process_.registerOutputStreamListener(output_);
    process_.registerErrorStreamListener(errors_);
    process_.start();
  }

  // The program says so each time it is started; the event may come a little later.
  bool waitForStart(std::size_t number) {
    if (!output_.waitForBytes(std::string("ready").size() * number)) return false;
    while (numbersOfPrograms().size() < number) SwitchToThread();
    return true;
  }

  // The program that runs now ends with exit code 1.
  void killProgram() {
    const HANDLE program = OpenProcess(PROCESS_TERMINATE, FALSE, numbersOfPrograms().back());
    EXPECT_NE(TerminateProcess(program, 1), 0);
    CloseHandle(program);
  }

  int endInput() {
    process_.closeInputStream();
    return process_.waitForProcess();
  }
  int exitCode() { return process_.waitForProcess(); }
  // Does not wait for whoever holds its streams.
  int exitCodeBeforeEndOfOutput() {
    int code = 0;
    while ((code = process_.getExitCode()) == 259) SwitchToThread();
    return code;
  }
  unsigned long number() { return process_.getProcessId(); }
  std::string errors() const { return errors_.data(); }
  const std::string& folder() const { return folder_; }

  // The events without time, thread and class.
  Texts events() const {
    Texts texts;
    for (const std::string& line : windowsLines(bytesOf(folder_ + "/event0.log"))) {
      const std::size_t name = line.find(" Controller ");
      if (name == std::string::npos) continue;
      texts.push_back(line.substr(line.find_first_not_of(' ', name + 11)));
    }
    return texts;
  }

  // The same with "#" for the number of a process.
  Texts anonymousEvents() const {
    Texts texts = events();
    for (std::string& text : texts) {
      for (const std::string marker : {"as process ", "Process ", "process "}) {
        const std::size_t at = text.find(marker);
        if (at == std::string::npos) continue;
        const std::size_t number = at + marker.size();
        text.replace(number, text.find_first_not_of("0123456789", number) - number, "#");
        break;
      }
    }
    return texts;
  }

 private:
  std::vector<unsigned long> numbersOfPrograms() const {
    const std::string started = "I Started " + kProgram + " as process ";
    std::vector<unsigned long> numbers;
    for (const std::string& event : events()) {
      if (event.starts_with(started)) numbers.push_back(std::stoul(event.substr(started.size())));
    }
    return numbers;
  }

  std::string folder_;
  Collector output_;
  Collector errors_;
  LaunchedProcess process_;
};

const std::string kStarted = "I Started " + kProgram + " as process #";
const std::string kKilled = "W Process # has ended with exit code 1";
const std::string kEnds = "I The controller ends";

TEST(ControllerExample, RestartsAProgramAsOftenAsAllowedAndThenGivesUp) {
  const TempFolder folder;
  ControllerProcess controller(folder, "maxRestartCount=2\nmaxRestartInterval=600\n", child({"do-sleep"}));
  for (std::size_t start = 1; start <= 3; ++start) {
    ASSERT_TRUE(controller.waitForStart(start));
    controller.killProgram();
  }
  EXPECT_EQ(controller.exitCode(), kGaveUp);
  EXPECT_EQ(controller.anonymousEvents(), (Texts{kStarted, kKilled, "I Restart 1 of 2 in 600 seconds", kStarted,
                                                 kKilled, "I Restart 2 of 2 in 600 seconds", kStarted, kKilled,
                                                 "E There were 2 in 600 seconds: giving up", kEnds}));
}

TEST(ControllerExample, RestartsAfterTheDelayAndCountsAnewWhenOneIsSet) {
  const TempFolder folder;
  ControllerProcess controller(folder, "maxRestartCount=1\nmaxRestartInterval=600\nmaxRestartDelay=1\n",
                               child({"do-sleep"}));
  for (std::size_t start = 1; start <= 4; ++start) {
    ASSERT_TRUE(controller.waitForStart(start));
    if (start < 4) controller.killProgram();
  }
  EXPECT_EQ(controller.endInput(), 0);
  EXPECT_EQ(controller.anonymousEvents(),
            (Texts{kStarted, kKilled, "I Restart 1 of 1 in 600 seconds", kStarted, kKilled,
                   "W There were 1 in 600 seconds: the next restart is in 1 seconds", kStarted, kKilled,
                   "I Restart 1 of 1 in 600 seconds", kStarted, "I Stopped process #", kEnds}));
}

TEST(ControllerExample, RestartsThatAreLongAgoDoNotCount) {
  const TempFolder folder;
  ControllerProcess controller(folder, "maxRestartCount=1\nmaxRestartInterval=0\n", child({"do-sleep"}));
  for (std::size_t start = 1; start <= 3; ++start) {
    ASSERT_TRUE(controller.waitForStart(start));
    if (start < 3) controller.killProgram();
  }
  EXPECT_EQ(controller.endInput(), 0);
  EXPECT_EQ(controller.anonymousEvents(),
            (Texts{kStarted, kKilled, "I Restart 1 of 1 in 0 seconds", kStarted, kKilled,
                   "I Restart 1 of 1 in 0 seconds", kStarted, "I Stopped process #", kEnds}));
}

TEST(ControllerExample, ACountOfZeroNeverRestarts) {
  const TempFolder folder;
  ControllerProcess controller(folder, "maxRestartCount=0\n", child({"do-exit", "9"}));
  EXPECT_EQ(controller.exitCode(), kGaveUp);
  EXPECT_EQ(controller.anonymousEvents(), (Texts{kStarted, "W Process # has ended with exit code 9",
                                                 "E There were 0 in 120 seconds: giving up", kEnds}));
}

TEST(ControllerExample, AProgramThatEndsWithCodeZeroIsNotRestarted) {
  const TempFolder folder;
  ControllerProcess controller(folder, "", child({"do-exit", "0"}));
  EXPECT_EQ(controller.exitCode(), 0);
  EXPECT_EQ(controller.anonymousEvents(), (Texts{kStarted, "I Process # has ended with exit code 0", kEnds}));
}

TEST(ControllerExample, AStopEndsTheProgramAndGivesLockAndNumberUp) {
  const TempFolder folder;
  ControllerProcess controller(folder, "", child({"do-sleep"}));
  ASSERT_TRUE(controller.waitForStart(1));
  EXPECT_EQ(windowsLines(bytesOf(controller.folder() + "/controller.pid")), Texts{std::to_string(controller.number())});
  EXPECT_EQ(controller.endInput(), 0);
  EXPECT_EQ(controller.anonymousEvents(), (Texts{kStarted, "I Stopped process #", kEnds}));
  EXPECT_FALSE(std::filesystem::exists(controller.folder() + "/controller.pid"));
  const std::string lock = controller.folder() + "/controller.lck";
  EXPECT_NE(std::unique_ptr<FileLock>(FileLock::newInstanceIfFree(lock, false, false)), nullptr);
}

TEST(ControllerExample, AStopEndsTheDelayOfARestart) {
  const TempFolder folder;
  ControllerProcess controller(folder, "maxRestartCount=0\nmaxRestartDelay=86400\n", child({"do-sleep"}));
  ASSERT_TRUE(controller.waitForStart(1));
  controller.killProgram();
  while (controller.events().size() < 3) SwitchToThread();
  EXPECT_EQ(controller.endInput(), 0);
  EXPECT_EQ(controller.anonymousEvents(),
            (Texts{kStarted, kKilled, "W There were 0 in 120 seconds: the next restart is in 86400 seconds", kEnds}));
}

TEST(ControllerExample, AStopEndsTheDelayOfARestartOfAProgramThatCannotBeFound) {
  const TempFolder folder;
  ControllerProcess controller(folder, "maxRestartCount=0\nmaxRestartDelay=86400\n", {"no-such-program"});
  while (controller.events().size() < 2) SwitchToThread();
  EXPECT_EQ(controller.endInput(), 0);
  EXPECT_EQ(controller.events(), (Texts{"E cannot find the program no-such-program",
                                        "W There were 0 in 120 seconds: the next restart is in 86400 seconds", kEnds}));
}

TEST(ControllerExample, WrongUsageAndPropertiesThatCannotBeReadEndItAtOnce) {
  const TempFolder folder;
  LaunchedProcess misused({TESSEL_CONTROLLER, "properties", "folder"});
  Collector usage;
  misused.registerErrorStreamListener(usage);
  misused.start();
  EXPECT_EQ(misused.waitForProcess(), 2);
  EXPECT_EQ(usage.data(), "usage: controller PROPERTIES FOLDER PROGRAM [ARGUMENT...]\r\n");
  const std::string missing = (folder.path() / "missing.properties").string();
  LaunchedProcess without({TESSEL_CONTROLLER, NYXProcess::quoteArgument(missing),
                           NYXProcess::quoteArgument((folder.path() / "work").string()), "program"});
  Collector failure;
  without.registerErrorStreamListener(failure);
  without.start();
  EXPECT_EQ(without.waitForProcess(), 1);
  EXPECT_NE(failure.data().find(missing), std::string::npos) << failure.data();
}

TEST(ControllerExample, ASecondControllerOfAFolderDoesNotRun) {
  const TempFolder folder;
  ControllerProcess first(folder, "", child({"do-sleep"}));
  ASSERT_TRUE(first.waitForStart(1));
  ControllerProcess second(folder, "", child({"do-sleep"}));
  EXPECT_EQ(second.exitCode(), kRunsAlready);
  EXPECT_EQ(second.errors(), "controller: another one works in " + second.folder() + "\r\n");
  EXPECT_EQ(first.endInput(), 0);
}

TEST(ControllerExample, AProgramThatCannotBeStartedCountsAsOneThatEnded) {
  const TempFolder folder;
  const std::string program = folder.write("text.exe", "this is no program").string();
  ControllerProcess controller(folder, "maxRestartCount=1\n", {program});
  EXPECT_EQ(controller.exitCode(), kGaveUp);
  const Texts events = controller.events();
  ASSERT_EQ(events.size(), 5U);
  EXPECT_EQ(events[0].find("E KTBNV0007E: "), 0U) << events[0];
  EXPECT_EQ(events[1], "I Restart 1 of 1 in 120 seconds");
  EXPECT_EQ(events[2], events[0]);
  EXPECT_EQ(events[3], "E There were 1 in 120 seconds: giving up");
}

TEST(ControllerExample, AProgramThatCannotBeFoundCountsAsOneThatEnded) {
  const TempFolder folder;
  ControllerProcess controller(folder, "maxRestartCount=1\n", {"no-such-program"});
  EXPECT_EQ(controller.exitCode(), kGaveUp);
  const std::string missing = "E cannot find the program no-such-program";
  EXPECT_EQ(controller.events(), (Texts{missing, "I Restart 1 of 1 in 120 seconds", missing,
                                        "E There were 1 in 120 seconds: giving up", kEnds}));
}

// Which holds those of the controller as well: they were inherited, and are passed on.
TEST(ControllerExample, AProgramIsRestartedThoughAGrandchildHoldsItsStreams) {
  const TempFolder folder;
  const std::string held = "tessel-controller-" + std::to_string(GetCurrentProcessId());
  NamedEvent end(held);
  ControllerProcess controller(folder, "maxRestartCount=1\n", child({"do-leave", "do-hold", held}));
  EXPECT_EQ(controller.exitCodeBeforeEndOfOutput(), kGaveUp);
  end.set();
  const std::string left = "W Process # has ended with exit code 5";
  EXPECT_EQ(controller.anonymousEvents(), (Texts{kStarted, left, "I Restart 1 of 1 in 120 seconds", kStarted, left,
                                                 "E There were 1 in 120 seconds: giving up", kEnds}));
}

// A listener would not see them all, so the handle is read.
TEST(ControllerExample, EveryByteOfTheProgramIsPassedOn) {
  const TempFolder folder;
  LaunchedProcess controller(controllerWords(folder, "", child({"do-write-bytes", "6100620a0d0aff1a00"})));
  controller.start();
  std::string bytes(100, ' ');
  DWORD length = 0;
  std::size_t size = 0;
  while (ReadFile(controller.getOutputStream(), bytes.data() + size, static_cast<DWORD>(bytes.size() - size), &length,
                  nullptr)) {
    size += length;
  }
  EXPECT_EQ(bytes.substr(0, size), std::string("a\0b\n\r\n\xff\x1a\0", 9));
  EXPECT_EQ(controller.waitForProcess(), 0);
}

TEST(ControllerExample, AFileOfMoreMegabytesThanItsLimitCanSayIsALargeOne) {
  const TempFolder folder;
  ControllerProcess controller(folder, "outputLogSize=2048\ntraceSize=4096\n", child({"do-exit", "0"}));
  EXPECT_EQ(controller.exitCode(), 0);
  EXPECT_EQ(controller.anonymousEvents(), (Texts{kStarted, "I Process # has ended with exit code 0", kEnds}));
}

TEST(ControllerExample, ArgumentsReachTheProgramUnchanged) {
  const TempFolder folder;
  ControllerProcess controller(folder, "", child({"do-say", "a \"b\"\\ ", "c:\\d e\\"}));
  EXPECT_EQ(controller.exitCode(), 0);
  EXPECT_EQ(controller.errors(), "c:\\d e\\");
}

}  // namespace
}  // namespace tessel::test
