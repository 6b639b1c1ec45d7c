// A process that is killed between any two steps of a rotation.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "support/ChildProcess.h"
#include "support/FileHooks.h"
#include "support/LogFolder.h"
#include "support/StartedChild.h"
#include "support/Watchdog.h"

namespace tessel::test {
namespace {

constexpr int kRounds = 500;
constexpr unsigned kPublished = 100;  // the child's exit code when it has written the line, without this before that

// How the current file is rotated.
enum class Where { constructor, publish };

// The calls that change or look at files, counted from when it is armed. Ends the process before one of them.
class Steps {
 public:
  explicit Steps(int last) : last_(last) {
    count(close_);
    count(create_);
    count(seek_);
    count(move_);
    count(secure_);
    count(check_);
    count(write_);
  }

  void arm() { armed_ = true; }
  int taken() const { return taken_; }

 private:
  template <class Hook>
  void count(Hook& hook) {
    hook.replaceWith([this, &hook](auto... arguments) {
      if (armed_ && taken_++ == last_) TerminateProcess(GetCurrentProcess(), 0);
      return hook.callOriginal(arguments...);
    });
  }

  int last_;
  int taken_ = 0;
  bool armed_ = false;
  ImportHook<"CloseHandle", decltype(CloseHandle)> close_;
  CreateHook create_;
  SeekHook seek_;
  MoveHook move_;
  SecureHook secure_;
  CheckHook check_;
  WriteHook write_;
};

const std::string kOldest = "generation 2\r\n";
const std::string kOlder = "generation 1\r\n";
const std::string kNewest = "generation 0\r\n";

void prepare(const LogFolder& folder) {
  folder.write("t2.log", kOldest);
  folder.write("t1.log", kOlder);
  folder.write("t0.log", kNewest);
}

// Rotates the file "generation 0" away and writes a line.
void rotate(const std::string& pattern, Where where, Steps& steps) {
  constexpr int kCount = 4;
  const int limit = static_cast<int>(kNewest.size()) + 1;
  if (where == Where::constructor) {
    steps.arm();
    SecureFileHandler(pattern, limit, kCount, false, false, 0).publish("in flight");
  } else {
    SecureFileHandler handler(pattern, limit, kCount, true, false, 0);
    handler.publish("full");
    steps.arm();
    handler.publish("in flight");
  }
}

const ChildRegistration dying("dies-while-it-rotates", [] {
  std::istringstream argument(StartedChild::argument());
  int where = 0;
  int last = 0;
  std::string pattern;
  argument >> where >> last >> std::ws;
  std::getline(argument, pattern);
  Steps steps(last);
  rotate(pattern, static_cast<Where>(where), steps);
  return static_cast<int>(kPublished);
});

// How many steps there are.
int stepsOf(Where where) {
  const LogFolder folder;
  prepare(folder);
  Steps steps(-1);
  rotate(folder.path("t%g.log"), where, steps);
  return steps.taken();
}

std::string allGenerations(const LogFolder& folder) {
  std::string text;
  for (const char* name : {"t3.log", "t2.log", "t1.log", "t0.log"}) text += folder.bytes(name);
  return text;
}

void expectNothingLost(Where where, int step) {
  const LogFolder folder;
  prepare(folder);
  const std::string argument =
      std::to_string(static_cast<int>(where)) + ' ' + std::to_string(step) + ' ' + folder.path("t%g.log");
  const unsigned long code = StartedChild("dies-while-it-rotates", argument).exitCode();
  folder.open({.count = 4})->publish("after the restart");
  const std::string before = kOldest + kOlder + kNewest + (where == Where::publish ? "full\r\n" : "");
  const std::string after = "after the restart\r\n";
  const std::string found = allGenerations(folder);
  if (code == 0 && found == before + after) return;
  EXPECT_EQ(found, before + "in flight\r\n" + after) << "killed before step " << step << " with code " << code;
}

TEST(RotationKills, LoseAtMostTheLineInFlight) {
  setTestLimit(std::chrono::seconds(600));  // each round is a process
  const int inConstructor = stepsOf(Where::constructor);
  const int inPublish = stepsOf(Where::publish);
  EXPECT_GE(inPublish, 10);
  EXPECT_GE(inConstructor, 10);
  const int all = inConstructor + inPublish + 2;  // behind the last step, too
  for (int round = 0; round < kRounds && !HasFailure(); ++round) {
    const int step = round % all;
    if (step <= inConstructor) {
      expectNothingLost(Where::constructor, step);
    } else {
      expectNothingLost(Where::publish, step - inConstructor - 1);
    }
  }
}

}  // namespace
}  // namespace tessel::test
