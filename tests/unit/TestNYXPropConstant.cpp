#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXPropConstant.h>
#include <tessel/NativeProperties.h>

#include "support/Captures.h"
#include "support/TempFolder.h"
#include "support/Thrown.h"

namespace tessel {

struct NYXPropConstantTest {
  struct Delete {
    void operator()(NYXPropConstant* object) const { delete object; }
  };
  using Copy = std::unique_ptr<NYXPropConstant, Delete>;

  static Copy copy() { return Copy(new NYXPropConstant(NYXPropConstant::getInstance())); }
  static void assign(NYXPropConstant& to) { to = NYXPropConstant::getInstance(); }
};

namespace {

struct Row {
  const NativePropertyItem& item;
  std::string shown;
};

std::string printed(const NativePropertyItem& item) {
  std::ostringstream text;
  text << item;
  return text.str();
}

std::string text(const std::string& key) { return printed(NativePropertyItem(key)); }
std::string number(const std::string& key, int value, int minimum) {
  return printed(NativePropertyItem(key, value, minimum, 2147483647));
}
std::string anyNumber(const std::string& key, int value) {
  return printed(NativePropertyItem(key, value, -2147483647 - 1, 2147483647));
}
std::string flag(const std::string& key) { return printed(NativePropertyItem(key, true)); }

std::vector<Row> rows(const NYXPropConstant& all) {
  return {{all.agentQMgr, text("agentQMgr")},
          {all.agentQMgrHost, text("agentQMgrHost")},
          {all.agentQMgrRetryInterval, number("agentQMgrRetryInterval", 30, 0)},
          {all.tesselQueueManager, text("tessel.queue.manager")},
          {all.loggerQMgrRetryInterval, number("loggerQMgrRetryInterval", 30, 0)},
          {all.tesselQueueManagerHost, text("tessel.queue.manager.host")},
          {all.outputLogFiles, number("outputLogFiles", 5, 1)},
          {all.outputLogSize, number("outputLogSize", 1, 1)},
          {all.trace, text("trace")},
          {all.traceFiles, number("traceFiles", 5, 1)},
          {all.traceSize, number("traceSize", 20, 1)},
          {all.adminGroup, text("adminGroup")},
          {all.maxRestartCount, number("maxRestartCount", 4, 0)},
          {all.maxRestartInterval, number("maxRestartInterval", 120, 0)},
          {all.maxRestartDelay, anyNumber("maxRestartDelay", -1)},
          {all.processControllerStatus, flag("processControllerStatus")},
          {all.lastApplicationExitCode, anyNumber("lastApplicationExitCode", 0)},
          {all.queueManagerStatus, flag("queueManagerStatus")},
          {all.queueManagerLastError, anyNumber("queueManagerLastError", 0)},
          {all.currentApplicationRestartCount, anyNumber("currentApplicationRestartCount", 0)},
          {all.totalApplicationRestartCount, anyNumber("totalApplicationRestartCount", 0)}};
}

TEST(NYXPropConstant, EveryKeyHasItsTypeDefaultAndRange) {
  for (const Row& row : rows(NYXPropConstant::getInstance())) EXPECT_EQ(row.shown, printed(row.item));
}

TEST(NYXPropConstant, ItemsAreAllOfThemInOrder) {
  const NYXPropConstant& all = NYXPropConstant::getInstance();
  std::vector<const NativePropertyItem*> expected;
  for (const Row& row : rows(all)) expected.push_back(&row.item);
  EXPECT_EQ(expected, all.getItems());
}

TEST(NYXPropConstant, ThereIsOneInstanceUntilItIsDeleted) {
  const NYXPropConstant* first = &NYXPropConstant::getInstance();
  EXPECT_EQ(first, &NYXPropConstant::getInstance());
  NYXPropConstant::deleteInstance();
  const NYXPropConstant& second = NYXPropConstant::getInstance();
  EXPECT_EQ(&second, &NYXPropConstant::getInstance());
  EXPECT_EQ("agentQMgr", second.agentQMgr.getKey());
}

TEST(NYXPropConstant, DeletingTwiceIsHarmless) {
  NYXPropConstant::getInstance();
  NYXPropConstant::deleteInstance();
  NYXPropConstant::deleteInstance();
  EXPECT_EQ(30, NYXPropConstant::getInstance().agentQMgrRetryInterval.getDefaultIntegerValue());
}

TEST(NYXPropConstant, ThreadsThatComeFirstTogetherGetTheSameInstance) {
  for (int round = 0; round < 50; ++round) {
    NYXPropConstant::deleteInstance();
    std::vector<const NYXPropConstant*> seen(8);
    std::vector<std::thread> threads;
    for (auto& mine : seen) threads.emplace_back([&mine] { mine = &NYXPropConstant::getInstance(); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(1U, std::set<const NYXPropConstant*>(seen.begin(), seen.end()).size());
  }
}

TEST(NYXPropConstant, CopyHasEveryItem) {
  const auto copy = NYXPropConstantTest::copy();
  for (const Row& row : rows(*copy)) EXPECT_EQ(row.shown, printed(row.item));
}

TEST(NYXPropConstant, AssignmentIsCapturedAndRefused) {
  const test::Captures captures;
  const auto copy = NYXPropConstantTest::copy();
  const std::string refused = "NYXPropConstant assignment operator should never be called!";
  EXPECT_EQ(refused, test::thrownBy<NYXException>([&] { NYXPropConstantTest::assign(*copy); }));
  EXPECT_EQ(std::vector<std::string>{"class NYXException: " + refused}, captures.values("Cause:"));
  EXPECT_EQ(std::vector<std::string>{"NYXPropConstant"}, captures.values("Class:"));
  EXPECT_EQ(std::vector<std::string>{"operator="}, captures.values("Method:"));
  EXPECT_EQ(std::vector<std::string>{"FFDC_001"}, captures.values("Probe:"));
}

TEST(NYXPropConstant, AgentFileWithoutAnIntervalGivesTheDefaultAndOneBelowTheRangeFails) {
  const test::TempFolder folder;
  const NativePropertyItem& interval = NYXPropConstant::getInstance().agentQMgrRetryInterval;
  NativeProperties properties;
  properties.loadProperties(folder.write("agent.properties", "agentQMgr=Q1\n").string());
  EXPECT_EQ(30, properties.getPropertyAsInteger(interval));
  properties.loadProperties(folder.write("agent.properties", "agentQMgrRetryInterval=-1\n").string());
  EXPECT_EQ(test::messageText("KTBNV0119_OUT_OF_RANGE", "agentQMgrRetryInterval", "-1", "0", "2147483647"),
            test::thrownBy<NYXException>([&] { properties.getPropertyAsInteger(interval); }));
}

TEST(NYXPropConstant, RestartDelayMayBeNegativeAndTheOtherRestartSettingsMayNot) {
  const NYXPropConstant& all = NYXPropConstant::getInstance();
  const std::string least = "-2147483648";
  EXPECT_EQ(-2147483647 - 1, all.maxRestartDelay.getIntegerValue(&least));
  EXPECT_THROW(all.maxRestartCount.getIntegerValue(&least), NYXException);
  EXPECT_THROW(all.maxRestartInterval.getIntegerValue(&least), NYXException);
}

}  // namespace
}  // namespace tessel
