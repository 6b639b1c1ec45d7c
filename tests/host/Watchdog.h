// Ends a process in which something hangs, and says what.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace tessel::host {

// Unless it is gone within `limit`, it writes what `hung` says to standard error and ends the process at once.
class Watchdog {
 public:
  Watchdog(std::chrono::seconds limit, std::function<std::string()> hung)
      : hung_(std::move(hung)), thread_([this, limit] { watch(limit); }) {}
  ~Watchdog() {
    {
      const std::lock_guard guard(mutex_);
      done_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  void watch(std::chrono::seconds limit) {
    std::unique_lock guard(mutex_);
    if (changed_.wait_for(guard, limit, [this] { return done_; })) return;
    std::fprintf(stderr, "hung: %s\n", hung_().c_str());
    std::_Exit(EXIT_FAILURE);
  }

  std::function<std::string()> hung_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool done_ = false;  // guarded by mutex_
  std::thread thread_;
};

}  // namespace tessel::host
