#include "support/Watchdog.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace tessel::test {
namespace {

using Clock = std::chrono::steady_clock;

// Lives for the process: the thread may look at it until the very end. The system's own lock and condition need no
// handle; those of the run-time open some when threads meet, in the middle of a test that counts handles.
struct Watch {
  SRWLOCK lock = SRWLOCK_INIT;
  CONDITION_VARIABLE changed = CONDITION_VARIABLE_INIT;
  std::string name;  // empty between tests
  Clock::time_point deadline = Clock::time_point::max();
};

Watch& watch() {
  static Watch& instance = *new Watch;
  return instance;
}

class Guard {
 public:
  Guard() { AcquireSRWLockExclusive(&watch().lock); }
  ~Guard() { ReleaseSRWLockExclusive(&watch().lock); }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

  // Until something has changed, or the time is over.
  void wait(Clock::duration time) {
    constexpr std::chrono::milliseconds kLongest = std::chrono::hours(1);
    const auto wait = std::min(std::chrono::ceil<std::chrono::milliseconds>(time), kLongest);
    SleepConditionVariableSRW(&watch().changed, &watch().lock, static_cast<DWORD>(wait.count()), 0);
  }
};

DWORD WINAPI guardTests(void*) {
  const Watch& shared = watch();
  Guard guard;
  for (;;) {
    const Clock::time_point now = Clock::now();
    if (shared.name.empty()) {
      guard.wait(Clock::duration::max());
    } else if (now < shared.deadline) {
      guard.wait(shared.deadline - now);
    } else {
      std::fprintf(stderr, "\nWATCHDOG: %s takes too long\n", shared.name.c_str());
      std::fflush(stderr);
      std::_Exit(3);
    }
  }
}

void expect(const std::string& name, Clock::time_point deadline) {
  const Guard guard;
  watch().name = name;
  watch().deadline = deadline;
  WakeConditionVariable(&watch().changed);
}

}  // namespace

Watchdog::Watchdog() { CloseHandle(CreateThread(nullptr, 0, guardTests, nullptr, 0, nullptr)); }

void Watchdog::OnTestStart(const testing::TestInfo& info) {
  expect(std::string(info.test_suite_name()) + "." + info.name(), Clock::now() + kTestLimit);
}

void Watchdog::OnTestEnd(const testing::TestInfo&) { expect(std::string(), Clock::time_point::max()); }

void setTestLimit(std::chrono::seconds limit) {
  const Guard guard;
  watch().deadline = Clock::now() + limit;
  WakeConditionVariable(&watch().changed);
}

}  // namespace tessel::test
