// Handshakes between the threads of a test.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace tessel::test {

// How long a test waits for what must happen at once: long enough for the slowest machine, short enough to say what
// hung instead of hanging.
inline constexpr std::chrono::seconds kWatchdog{30};

// Stays set once it was set.
class Event {
 public:
  void set() {
    const std::lock_guard guard(mutex_);
    set_ = true;
    changed_.notify_all();
  }

  // Returns false when the watchdog ran out.
  bool wait(std::chrono::milliseconds limit = kWatchdog) {
    std::unique_lock guard(mutex_);
    return changed_.wait_for(guard, limit, [&] { return set_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool set_ = false;
};

}  // namespace tessel::test
