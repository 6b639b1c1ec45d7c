#include <gmock/gmock.h>

#include <csignal>
#include <string>
#include <vector>

#include <tessel/NYXUtils.h>
#include <tessel/ProcessSignalActionHandler.h>

#include "support/Records.h"
#include "support/TraceScope.h"

namespace tessel::test {
namespace {

class Recording : public ProcessSignalActionHandler {
 public:
  void action(int signal) override { signals.push_back(signal); }
  std::vector<int> signals;
};

class ProcessSignals : public testing::Test {
 protected:
  ~ProcessSignals() override { NYXUtils::handleSignals(nullptr); }
};

TEST_F(ProcessSignals, ReachTheHandler) {
  for (const int signal : {SIGINT, SIGTERM, SIGBREAK}) {
    Recording handler;
    NYXUtils::handleSignals(&handler);
    std::raise(signal);
    EXPECT_EQ(handler.signals, std::vector<int>{signal});
  }
}

TEST_F(ProcessSignals, ReachTheHandlerEveryTime) {
  Recording handler;
  NYXUtils::handleSignals(&handler);
  for (int i = 0; i < 3; ++i) std::raise(SIGINT);
  EXPECT_EQ(handler.signals, (std::vector<int>{SIGINT, SIGINT, SIGINT}));
}

TEST_F(ProcessSignals, ReachTheHandlerInstalledLast) {
  Recording first;
  Recording second;
  NYXUtils::handleSignals(&first);
  NYXUtils::handleSignals(&second);
  std::raise(SIGTERM);
  EXPECT_TRUE(first.signals.empty());
  EXPECT_EQ(second.signals, std::vector<int>{SIGTERM});
}

TEST_F(ProcessSignals, AreTheSystemsAgainWithoutAHandler) {
  Recording handler;
  NYXUtils::handleSignals(&handler);
  NYXUtils::handleSignals(nullptr);
  for (const int signal : {SIGINT, SIGTERM, SIGBREAK}) EXPECT_EQ(std::signal(signal, SIG_DFL), SIG_DFL) << signal;
}

TEST_F(ProcessSignals, AreTracedByTheDefaultAction) {
  ProcessSignalActionHandler handler;
  NYXUtils::handleSignals(&handler);
  const TraceScope trace("ProcessSignalActionHandler=MODERATE");
  const RecordingHandler log("ProcessSignalActionHandler");
  std::raise(SIGTERM);
  const auto data = recordsOf(log, LogRecordType::DATA);
  ASSERT_EQ(data.size(), 1U);
  EXPECT_THAT(data[0].message, testing::HasSubstr("[Received signal: " + std::to_string(SIGTERM) + "]"));
}

}  // namespace
}  // namespace tessel::test
