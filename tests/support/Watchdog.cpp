#include "support/Watchdog.h"

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

namespace tessel::test {
namespace {

using Clock = std::chrono::steady_clock;

// Lives for the process: the thread may look at it until the very end.
struct Watch {
  std::mutex mutex;
  std::condition_variable changed;
  std::string name;  // empty between tests
  Clock::time_point deadline = Clock::time_point::max();
};

Watch& watch() {
  static Watch& instance = *new Watch;
  return instance;
}

void guardTests() {
  constexpr std::chrono::hours kIdle{1};
  Watch& shared = watch();
  std::unique_lock lock(shared.mutex);
  for (;;) {
    if (shared.name.empty()) {
      shared.changed.wait_for(lock, kIdle);
    } else if (Clock::now() < shared.deadline) {
      shared.changed.wait_until(lock, shared.deadline);
    } else {
      std::fprintf(stderr, "\nWATCHDOG: %s takes too long\n", shared.name.c_str());
      std::fflush(stderr);
      std::_Exit(3);
    }
  }
}

void expect(const std::string& name, Clock::time_point deadline) {
  const std::lock_guard lock(watch().mutex);
  watch().name = name;
  watch().deadline = deadline;
  watch().changed.notify_one();
}

}  // namespace

Watchdog::Watchdog() { std::thread(guardTests).detach(); }

void Watchdog::OnTestStart(const testing::TestInfo& info) {
  expect(std::string(info.test_suite_name()) + "." + info.name(), Clock::now() + kTestLimit);
}

void Watchdog::OnTestEnd(const testing::TestInfo&) { expect(std::string(), Clock::time_point::max()); }

void setTestLimit(std::chrono::seconds limit) {
  const std::lock_guard lock(watch().mutex);
  watch().deadline = Clock::now() + limit;
  watch().changed.notify_one();
}

}  // namespace tessel::test
