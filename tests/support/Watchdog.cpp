#include "support/Watchdog.h"

#include <io.h>
#include <windows.h>

#include <algorithm>
#include <csignal>
#include <exception>
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
  const int error = _dup(2);

  // No child inherits it: what reads it would wait for the child's end.
  Watch() { SetHandleInformation(reinterpret_cast<HANDLE>(_get_osfhandle(error)), HANDLE_FLAG_INHERIT, 0); }
};

Watch& watch() {
  static Watch& instance = *new Watch;
  return instance;
}

// On standard error as it was before any test captured it. At once: what hangs may hold a lock that an exit needs.
[[noreturn]] void endWith(const std::string& text) {
  static_cast<void>(_write(watch().error, text.data(), static_cast<unsigned>(text.size())));
  TerminateProcess(GetCurrentProcess(), 3);
  for (;;) continue;
}

std::string runningTest() {
  if (!TryAcquireSRWLockExclusive(&watch().lock)) return "a test";
  std::string name = watch().name;
  ReleaseSRWLockExclusive(&watch().lock);
  return name.empty() ? "no test" : name;
}

// The library has a run-time of its own, whose exceptions are not seen from here.
void endByAbort(int) { endWith("\nABORTED: " + runningTest() + '\n'); }

[[noreturn]] void endByException() {
  std::string text = "\nTERMINATED: " + runningTest();
  if (const std::exception_ptr exception = std::current_exception()) {
    try {
      std::rethrow_exception(exception);
    } catch (const std::exception& known) {
      text += std::string(" let an exception out: ") + known.what();
    } catch (...) {
      text += " let an unknown exception out";
    }
  }
  endWith(text + '\n');
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
      endWith("\nWATCHDOG: " + shared.name + " takes too long\n");
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

Watchdog::Watchdog() {
  watch();
  std::set_terminate(endByException);
  std::signal(SIGABRT, endByAbort);
  CloseHandle(CreateThread(nullptr, 0, guardTests, nullptr, 0, nullptr));
}

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
