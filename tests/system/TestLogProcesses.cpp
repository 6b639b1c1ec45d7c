// Several processes that write to the same pattern.
#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>

#include <tessel/NYXException.h>

#include "support/ChildProcess.h"
#include "support/LogFolder.h"
#include "support/NamedEvent.h"
#include "support/StartedChild.h"

namespace tessel::test {
namespace {

constexpr int kLines = 400;
constexpr int kTurns = 20;
constexpr int kLinesOfATurn = 10;
constexpr int kLimit = 4000;
constexpr int kCount = 1000;

// The argument of a child: where to write, and who it is.
struct Task {
  std::string pattern;
  std::string who;

  static Task own() {
    std::istringstream argument(StartedChild::argument());
    Task task;
    std::getline(argument, task.pattern, '|');
    std::getline(argument, task.who);
    return task;
  }
  std::string text() const { return pattern + '|' + who; }
  std::string readyName() const { return eventName(pattern + "-ready-" + who); }
  std::string startName() const { return eventName(pattern + "-start"); }
};

void writeLines(SecureFileHandler& handler, const std::string& who, int first, int count) {
  for (int i = first; i < first + count; ++i) handler.publish(who + ' ' + std::to_string(i) + " the rest of the line");
}

// The exit code of a child: a failure is told on standard error.
int reported(const std::function<int()>& body) {
  try {
    return body();
  } catch (const NYXException& exception) {
    std::cerr << exception.getMessage() << std::endl;
    return 2;
  }
}

// Opens the file and waits until all the others have theirs.
const ChildRegistration together("logs-together", [] {
  const Task task = Task::own();
  NamedEvent start(task.startName());
  return reported([&] {
    SecureFileHandler handler(task.pattern, kLimit, kCount, true, false, 0);
    NamedEvent(task.readyName()).set();
    if (!start.wait()) return 1;
    writeLines(handler, task.who, 0, kLines);
    return 0;
  });
});

// Comes and goes while the others do.
const ChildRegistration inTurns("logs-in-turns", [] {
  const Task task = Task::own();
  NamedEvent start(task.startName());
  NamedEvent(task.readyName()).set();
  if (!start.wait()) return 1;
  return reported([&task] {
    for (int turn = 0; turn < kTurns; ++turn) {
      SecureFileHandler handler(task.pattern, kLimit, kCount, true, false, 0);
      writeLines(handler, task.who, turn * kLinesOfATurn, kLinesOfATurn);
    }
    return 0;
  });
});

class LogProcesses : public testing::TestWithParam<int> {
 protected:
  void run(const std::string& body) {
    const std::string pattern = folder.path("t%g.log");
    NamedEvent start(Task{pattern, ""}.startName());
    std::vector<std::unique_ptr<StartedChild>> children;
    for (int i = 0; i < GetParam(); ++i) {
      const Task task{pattern, std::to_string(i)};
      NamedEvent ready(task.readyName());
      children.push_back(std::make_unique<StartedChild>(body, task.text()));
      ASSERT_TRUE(ready.wait());
    }
    start.set();
    for (const auto& child : children) EXPECT_EQ(child->exitCode(), 0U);
  }

  // Each line of the process with that name, as often as it is there.
  void expectEveryLineOnce(int lines) const {
    std::map<std::string, int> found;
    for (const std::string& name : folder.names()) {
      const std::string bytes = folder.bytes(name);
      EXPECT_TRUE(bytes.empty() || bytes.ends_with("\r\n")) << name;
      for (const std::string& line : windowsLines(bytes)) ++found[line];
    }
    EXPECT_EQ(found.size(), static_cast<std::size_t>(GetParam() * lines));
    for (int process = 0; process < GetParam(); ++process) {
      for (int i = 0; i < lines; ++i) {
        const std::string line = std::to_string(process) + ' ' + std::to_string(i) + " the rest of the line";
        ASSERT_EQ(found[line], 1) << line;
      }
    }
  }

  const LogFolder folder;
};

TEST_P(LogProcesses, HaveFilesOfTheirOwnAndLoseNoLine) {
  run("logs-together");
  expectEveryLineOnce(kLines);
  for (int process = 1; process < GetParam(); ++process) {
    EXPECT_NE(folder.bytes("t0.log." + std::to_string(process)), "");
  }
  for (const std::string& name : folder.names()) EXPECT_EQ(name.find(".lck"), std::string::npos) << name;
}

TEST_P(LogProcesses, MayComeAndGo) {
  run("logs-in-turns");
  expectEveryLineOnce(kTurns * kLinesOfATurn);
}

INSTANTIATE_TEST_SUITE_P(Several, LogProcesses, testing::Values(2, 8));

}  // namespace
}  // namespace tessel::test
