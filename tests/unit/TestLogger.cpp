#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <tessel/LogRecord.h>
#include <tessel/Logger.h>

#include "support/CapturedOutput.h"
#include "support/FreshProcess.h"
#include "support/RecordingHandler.h"

namespace tessel {
namespace {

using test::CapturedOutput;
using test::RecordingHandler;
using Texts = std::vector<std::string>;

template <class Value>
std::string streamed(const Value& value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

std::string shown(const std::string& name, const std::string& level, unsigned handlers, unsigned children) {
  std::ostringstream text;
  text << "Logger:" << name << "(parent: " << static_cast<const void*>(Logger::getLogger(name)->getParent())
       << ", level: " << level << ", logHandlers.size(): " << handlers << ", childLoggers.size(): " << children << ")";
  return text.str();
}

// The logger's text with that many children.
void expectChildren(const std::string& name, unsigned children) {
  EXPECT_EQ(shown(name, "INFO   ", 0, children), streamed(*Logger::getLogger(name)));
}

void log(const std::string& logger, const LogLevel& level, const std::string& message) {
  LogRecord record(level, LogRecordType::EVENT, message);
  Logger::getLogger(logger)->log(record);
}

TEST(Logger, OfOneNameIsOneObject) {
  EXPECT_EQ(Logger::getLogger("logger.same"), Logger::getLogger("logger.same"));
  EXPECT_NE(Logger::getLogger("logger.same"), Logger::getLogger("logger.other"));
}

TEST(Logger, StartsAtInfo) {
  const Logger* logger = Logger::getLogger("logger.fresh");
  EXPECT_TRUE(logger->isLoggable(LogLevel::INFO));
  EXPECT_FALSE(logger->isLoggable(LogLevel::CONFIG));
}

TEST(Logger, AncestorMadeLaterAdoptsTheDescendant) {
  Logger* descendant = Logger::getLogger("later.b.c");
  Logger* ancestor = Logger::getLogger("later");
  EXPECT_EQ(ancestor, descendant->getParent());
  expectChildren("later", 1);
}

TEST(Logger, DescendantMadeLaterIsAdopted) {
  Logger* ancestor = Logger::getLogger("first");
  EXPECT_EQ(ancestor, Logger::getLogger("first.b")->getParent());
  expectChildren("first", 1);
}

TEST(Logger, LongerNameWithoutDotIsNoDescendant) {
  Logger* logger = Logger::getLogger("dot");
  EXPECT_NE(logger, Logger::getLogger("dotted")->getParent());
  EXPECT_NE(logger, Logger::getLogger("dotted.x")->getParent());
  expectChildren("dot", 0);
}

TEST(Logger, NearestAncestorIsTheParentAndEveryAncestorListsTheChild) {
  Logger::getLogger("near");
  Logger* nearest = Logger::getLogger("near.b");
  EXPECT_EQ(nearest, Logger::getLogger("near.b.c")->getParent());
  expectChildren("near", 2);
  expectChildren("near.b", 1);
}

// The newcomer takes every descendant, also from a nearer parent, which keeps it in its list all the same.
TEST(Logger, AncestorMadeLaterTakesDescendantsFromTheirParents) {
  Logger* middle = Logger::getLogger("takes.b");
  Logger* leaf = Logger::getLogger("takes.b.c");
  ASSERT_EQ(middle, leaf->getParent());
  Logger* top = Logger::getLogger("takes");
  EXPECT_EQ(top, leaf->getParent());
  EXPECT_EQ(top, middle->getParent());
  expectChildren("takes", 2);
  expectChildren("takes.b", 1);
}

TEST(Logger, RootAdoptsEveryParentlessLogger) {
  test::inFreshProcess([] {
    Logger* single = Logger::getLogger("rootless");
    Logger* top = Logger::getLogger("top");
    Logger* below = Logger::getLogger("top.below");
    ASSERT_EQ(nullptr, single->getParent());
    ASSERT_EQ(nullptr, top->getParent());
    Logger* root = Logger::getLogger("");
    EXPECT_EQ(nullptr, root->getParent());
    EXPECT_EQ(root, single->getParent());
    EXPECT_EQ(root, top->getParent());
    EXPECT_EQ(top, below->getParent());
  });
}

TEST(Logger, RootIsTheParentOfLaterLoggersWithoutAnother) {
  Logger* root = Logger::getLogger("");
  EXPECT_EQ(root, Logger::getLogger("parentless")->getParent());
}

TEST(Logger, StreamShowsTheNode) {
  Logger* logger = Logger::getLogger("streamed");
  Logger::getLogger("streamed.child");
  logger->setLevel(LogLevel::FINE);
  const RecordingHandler handler("streamed");
  EXPECT_EQ(shown("streamed", "FINE   ", 1, 1), streamed(*logger));
}

TEST(Logger, PublishesToItsOwnHandlersAndThenToTheAncestors) {
  static Texts order;
  class Named : public LogHandler {
   public:
    explicit Named(const std::string& name) : LogHandler(LogLevel::ALL), name_(name) {}
    void publish(LogRecord& record) override { order.push_back(name_ + ":" + record.getMessage()); }

   private:
    std::string name_;
  };
  Named own1("own1");
  Named own2("own2");
  Named above("above");
  Logger* parent = Logger::getLogger("order");
  Logger* logger = Logger::getLogger("order.child");
  parent->addHandler(above);
  logger->addHandler(own1);
  logger->addHandler(own2);
  log("order.child", LogLevel::INFO, "m");
  EXPECT_EQ((Texts{"own1:m", "own2:m", "above:m"}), order);
  parent->removeHandler(above);
  logger->removeHandler(own1);
  logger->removeHandler(own2);
}

TEST(Logger, DropsRecordsBelowItsLevel) {
  const RecordingHandler handler("threshold");
  Logger::getLogger("threshold")->setLevel(LogLevel::WARNING);
  log("threshold", LogLevel::INFO, "below");
  log("threshold", LogLevel::WARNING, "at");
  log("threshold", LogLevel::SEVERE, "above");
  EXPECT_EQ((Texts{"at", "above"}), handler.messages());
}

TEST(Logger, DoesNotAskTheLevelsOfItsAncestors) {
  const RecordingHandler handler("silent");
  Logger* child = Logger::getLogger("silent.child");
  Logger::getLogger("silent")->setLevel(LogLevel::OFF);
  child->setLevel(LogLevel::FINE);
  log("silent.child", LogLevel::FINE, "m");
  EXPECT_EQ(Texts{"m"}, handler.messages());
}

TEST(Logger, WarningWithoutAnyHandlerGoesToStandardError) {
  LogRecord warning(LogLevel::WARNING, LogRecordType::EVENT, "nobody listens");
  LogRecord severe(LogLevel::SEVERE, LogRecordType::EVENT, "still nobody");
  CapturedOutput error(CapturedOutput::error);
  Logger::getLogger("handlerless")->log(warning);
  Logger::getLogger("handlerless")->log(severe);
  EXPECT_EQ(streamed(warning) + "\n" + streamed(severe) + "\n", error.text());
}

TEST(Logger, EscapesInAWarningOnStandardErrorBecomeCharacters) {
  LogRecord warning(LogLevel::WARNING, LogRecordType::EVENT, "caf\\u00E9");
  CapturedOutput error(CapturedOutput::error);
  Logger::getLogger("handlerless")->log(warning);
  EXPECT_EQ("caf\xC3\xA9\n", error.text().substr(error.text().size() - 6));
}

TEST(Logger, RecordBelowWarningWithoutAnyHandlerIsDropped) {
  CapturedOutput error(CapturedOutput::error);
  CapturedOutput output(CapturedOutput::output);
  Logger::getLogger("handlerless")->setLevel(LogLevel::ALL);
  log("handlerless", LogLevel::INFO, "nobody listens");
  log("handlerless", LogLevel::FINE, "nobody listens");
  EXPECT_EQ("", error.text());
  EXPECT_EQ("", output.text());
}

TEST(Logger, WarningForAHandlerOfAnAncestorStaysOffStandardError) {
  const RecordingHandler handler("listening", LogLevel::OFF);
  CapturedOutput error(CapturedOutput::error);
  log("listening.child", LogLevel::SEVERE, "m");
  EXPECT_EQ("", error.text());
  EXPECT_EQ(Texts{"m"}, handler.messages());
}

TEST(Logger, SetLevelReachesEveryDescendant) {
  Logger* child = Logger::getLogger("levels.b");
  Logger* grandchild = Logger::getLogger("levels.b.c");
  Logger* parent = Logger::getLogger("levels");
  child->setLevel(LogLevel::SEVERE);
  parent->setLevel(LogLevel::FINE);
  for (const Logger* logger : {parent, child, grandchild}) {
    EXPECT_TRUE(logger->isLoggable(LogLevel::FINE));
    EXPECT_FALSE(logger->isLoggable(LogLevel::FINER));
  }
  EXPECT_FALSE(Logger::getLogger("levelsother")->isLoggable(LogLevel::FINE));
}

// Every ancestor lists every descendant: a walk that visits a logger once per way to it would never end.
TEST(Logger, SetLevelVisitsEachOfManyNestedLoggersOnce) {
  std::string name = "nested";
  Logger* top = Logger::getLogger(name);
  for (int depth = 0; depth < 64; ++depth) Logger::getLogger(name += ".n");
  top->setLevel(LogLevel::FINEST);
  EXPECT_TRUE(Logger::getLogger(name)->isLoggable(LogLevel::FINEST));
}

TEST(Logger, HandlerAddedTwiceGetsRecordsTwice) {
  RecordingHandler handler("twice");
  Logger::getLogger("twice")->addHandler(handler);
  log("twice", LogLevel::INFO, "m");
  EXPECT_EQ((Texts{"m", "m"}), handler.messages());
}

TEST(Logger, RemoveHandlerRemovesEveryOccurrence) {
  RecordingHandler handler("both");
  Logger::getLogger("both")->addHandler(handler);
  Logger::getLogger("both")->removeHandler(handler);
  log("both", LogLevel::INFO, "m");
  EXPECT_EQ(Texts{}, handler.messages());
  expectChildren("both", 0);
}

// Removes a handler, itself if need be, when it is given a record.
class Remover : public LogHandler {
 public:
  Remover(Logger& logger, LogHandler* other) : LogHandler(LogLevel::ALL), logger_(logger), other_(other) {}
  void publish(LogRecord& /*record*/) override {
    ++calls;
    logger_.removeHandler(other_ ? *other_ : *this);
  }

  int calls = 0;

 private:
  Logger& logger_;
  LogHandler* other_;
};

TEST(Logger, HandlerMayRemoveItselfWhilePublishing) {
  Logger& logger = *Logger::getLogger("removes.itself");
  Remover handler(logger, nullptr);
  logger.addHandler(handler);
  logger.addHandler(handler);
  const RecordingHandler after("removes.itself");
  log("removes.itself", LogLevel::INFO, "first");
  log("removes.itself", LogLevel::INFO, "second");
  EXPECT_EQ(1, handler.calls);
  EXPECT_EQ((Texts{"first", "second"}), after.messages());
}

TEST(Logger, HandlerRemovedByAnEarlierOneDoesNotGetTheRecord) {
  Logger& logger = *Logger::getLogger("removes.next");
  RecordingHandler next("removes.unused");
  Remover remover(logger, &next);
  logger.addHandler(remover);
  logger.addHandler(next);
  log("removes.next", LogLevel::INFO, "m");
  EXPECT_EQ(Texts{}, next.messages());
  logger.removeHandler(remover);
}

TEST(Logger, ExceptionOutOfAHandlerStopsNobodyElse) {
  class Throwing : public LogHandler {
   public:
    Throwing() : LogHandler(LogLevel::ALL) {}
    void publish(LogRecord& record) override {
      if (record.getMessage() == "foreign") throw 42;
      throw std::runtime_error("a failing output");
    }
  };
  Throwing throwing;
  Logger* logger = Logger::getLogger("throwing.child");
  logger->addHandler(throwing);
  const RecordingHandler same("throwing.child");
  const RecordingHandler above("throwing");
  EXPECT_NO_THROW(log("throwing.child", LogLevel::SEVERE, "standard"));
  EXPECT_NO_THROW(log("throwing.child", LogLevel::SEVERE, "foreign"));
  logger->removeHandler(throwing);
  EXPECT_EQ((Texts{"standard", "foreign"}), same.messages());
  EXPECT_EQ((Texts{"standard", "foreign"}), above.messages());
}

TEST(Logger, RemoveHandlerWaitsForAThreadInsideTheHandler) {
  class Blocking : public LogHandler {
   public:
    Blocking() : LogHandler(LogLevel::ALL) {}
    void publish(LogRecord& /*record*/) override {
      entered.set_value();
      release.get_future().wait();
      left = true;
    }

    std::promise<void> entered;
    std::promise<void> release;
    std::atomic<bool> left{false};
  };
  Blocking handler;
  Logger* logger = Logger::getLogger("blocking");
  logger->addHandler(handler);
  std::thread publisher([] { log("blocking", LogLevel::INFO, "m"); });
  handler.entered.get_future().wait();
  std::promise<void> removing;
  std::thread remover([&] {
    removing.set_value();
    logger->removeHandler(handler);
    EXPECT_TRUE(handler.left);
  });
  removing.get_future().wait();
  handler.release.set_value();
  publisher.join();
  remover.join();
}

TEST(Logger, DestroyedLoggerLeavesParentAndRegistry) {
  Logger::getLogger("owner");
  Logger* child = Logger::getLogger("owner.child");
  child->setLevel(LogLevel::OFF);
  expectChildren("owner", 1);
  delete child;
  expectChildren("owner", 0);
  EXPECT_TRUE(Logger::getLogger("owner.child")->isLoggable(LogLevel::INFO));
}

TEST(Logger, LosesNothingWhileLevelsAndHandlersChange) {
  constexpr int kThreads = 8;
  constexpr int kRecords = 300;
  const RecordingHandler always("busy");
  Logger* logger = Logger::getLogger("busy.child");
  std::atomic<int> running{kThreads};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&running, i] {
      for (int n = 0; n < kRecords; ++n) {
        log("busy.child", LogLevel::SEVERE, "m");
        Logger::getLogger("busy.child.n" + std::to_string(i) + std::to_string(n % 20));
      }
      --running;
    });
  }
  int rounds = 0;
  do {
    const RecordingHandler sometimes("busy.child");
    logger->setLevel(rounds++ % 2 == 0 ? LogLevel::ALL : LogLevel::WARNING);
  } while (running > 0);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(static_cast<std::size_t>(kThreads * kRecords), always.records().size());
}

}  // namespace
}  // namespace tessel
