// Loggers whose levels and handlers change while eight threads log.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

#include <tessel/LogHandler.h>
#include <tessel/LogRecord.h>
#include <tessel/Logger.h>

#include "host/Watchdog.h"

namespace tessel::host {
namespace {

constexpr unsigned kThreads = 8;
constexpr unsigned kRecords = 5000;  // of each thread
constexpr std::chrono::seconds kLimit{120};

void logOne(Logger& logger, unsigned long sender) {
  LogRecord record(LogLevel::INFO, LogRecordType::EVENT, "text");
  record.setThreadId(sender);
  logger.log(record);
}

// Counts what each sender sends, and who still comes after the handler was removed.
class CountingHandler : public LogHandler {
 public:
  CountingHandler() : LogHandler(LogLevel::ALL) {}

  void publish(LogRecord& record) override {
    if (closed_) ++late_;
    ++counts_.at(record.getThreadId());
  }

  void close() { closed_ = true; }
  unsigned late() const { return late_; }
  std::vector<unsigned> counts() const { return {counts_.begin(), counts_.end()}; }

 private:
  std::array<std::atomic<unsigned>, kThreads> counts_{};
  std::atomic<bool> closed_{false};
  std::atomic<unsigned> late_{0};
};

// Eight threads that log while they exist, at least kRecords each.
class Senders {
 public:
  explicit Senders(Logger& logger) {
    for (unsigned i = 0; i < kThreads; ++i) threads_.emplace_back([this, &logger, i] { send(logger, i); });
  }
  ~Senders() {
    for (std::thread& thread : threads_) thread.join();
  }
  Senders(const Senders&) = delete;
  Senders& operator=(const Senders&) = delete;

  bool sending() const { return ended_ < kThreads; }

 private:
  void send(Logger& logger, unsigned sender) {
    for (unsigned i = 0; i < kRecords; ++i) logOne(logger, sender);
    ++ended_;
  }

  std::atomic<unsigned> ended_{0};
  std::vector<std::thread> threads_;
};

const std::vector<unsigned> kEverything(kThreads, kRecords);

// Occupies the thread that publishes until the logger's list no longer holds the handler, then a little longer.
class LingeringHandler : public LogHandler {
 public:
  explicit LingeringHandler(Logger& logger) : LogHandler(LogLevel::ALL), logger_(logger) {}

  void publish(LogRecord&) override {
    inside_ = true;
    while (!isOffTheList()) std::this_thread::yield();
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    left_ = true;
  }

  bool inside() const { return inside_; }
  bool left() const { return left_; }

 private:
  bool isOffTheList() const {
    std::ostringstream text;
    text << logger_;
    return text.str().find("logHandlers.size(): 0") != std::string::npos;
  }

  Logger& logger_;
  std::atomic<bool> inside_{false};
  std::atomic<bool> left_{false};
};

}  // namespace

TEST(LoggerConcurrency, ChangingLevelsLosesNoRecordThatPassesThemAll) {
  const Watchdog watchdog(kLimit, [] { return "logging while levels change"; });
  Logger& parent = *Logger::getLogger("host.levels");
  Logger& logger = *Logger::getLogger("host.levels.child");
  CountingHandler handler;
  parent.addHandler(handler);
  {
    const Senders senders(logger);
    while (senders.sending()) {
      parent.setLevel(LogLevel::ALL);
      logger.setLevel(LogLevel::FINE);
      parent.setLevel(LogLevel::INFO);
    }
  }
  parent.removeHandler(handler);
  EXPECT_EQ(handler.counts(), kEverything);
}

TEST(LoggerConcurrency, ComingAndGoingHandlersLoseNothingForTheOneThatStays) {
  const Watchdog watchdog(kLimit, [] { return "logging while handlers come and go"; });
  Logger& logger = *Logger::getLogger("host.handlers");
  CountingHandler stays;
  logger.addHandler(stays);
  unsigned late = 0;
  {
    const Senders senders(logger);
    while (senders.sending()) {
      const auto passing = std::make_unique<CountingHandler>();
      logger.addHandler(*passing);
      logger.addHandler(*passing);
      std::this_thread::yield();
      logger.removeHandler(*passing);
      passing->close();
      std::this_thread::yield();
      late += passing->late();
    }
  }
  logger.removeHandler(stays);
  EXPECT_EQ(stays.counts(), kEverything);
  EXPECT_EQ(late, 0U);
}

TEST(LoggerConcurrency, EveryThreadMayAddAndRemoveItsOwnHandler) {
  const Watchdog watchdog(kLimit, [] { return "eight threads that add and remove handlers"; });
  constexpr unsigned kRounds = 500;
  Logger& logger = *Logger::getLogger("host.own");
  std::atomic<unsigned> own{0};
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kThreads; ++i) {
    threads.emplace_back([&logger, &own, i] {
      for (unsigned round = 0; round < kRounds; ++round) {
        CountingHandler handler;
        logger.addHandler(handler);
        logOne(logger, i);
        logger.removeHandler(handler);
        own += handler.counts().at(i);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(own, kThreads * kRounds);
}

TEST(LoggerConcurrency, AncestorsThatAppearDuringLoggingTakeTheLoggerOver) {
  const Watchdog watchdog(kLimit, [] { return "ancestors that are made during logging"; });
  Logger& leaf = *Logger::getLogger("host.grow.a.b.c");
  CountingHandler handler;
  leaf.addHandler(handler);
  const char* const ancestors[] = {"host.grow", "host.grow.a", "host.grow.a.b"};
  {
    const Senders senders(leaf);
    for (const char* name : ancestors) Logger::getLogger(name)->setLevel(LogLevel::FINE);
    while (senders.sending()) Logger::getLogger("host.grow")->setLevel(LogLevel::INFO);
  }
  leaf.removeHandler(handler);
  EXPECT_EQ(leaf.getParent(), Logger::getLogger("host.grow.a.b"));
  EXPECT_EQ(handler.counts(), kEverything);
}

TEST(LoggerConcurrency, RemoveHandlerReturnsOnlyWhenNoOtherThreadIsInside) {
  const Watchdog watchdog(kLimit, [] { return "removing a handler that another thread is inside of"; });
  Logger& logger = *Logger::getLogger("host.inside");
  LingeringHandler handler(logger);
  logger.addHandler(handler);
  std::thread sender([&logger] { logOne(logger, 0); });
  while (!handler.inside()) std::this_thread::yield();
  logger.removeHandler(handler);
  const bool left = handler.left();
  sender.join();
  EXPECT_TRUE(left);
}

}  // namespace tessel::host
