// When a program that has ended is started again.
#pragma once

#include <chrono>
#include <deque>

namespace controller {

class RestartPolicy {
 public:
  using Clock = std::chrono::steady_clock;
  enum class Decision { restart, restartLater, giveUp };

  // At most `count` restarts in `interval`. When there were as many, a negative delay makes it give up; otherwise the
  // program is restarted after the delay, and counting begins anew.
  RestartPolicy(int count, std::chrono::seconds interval, std::chrono::seconds delay);

  Decision decide(Clock::time_point now);

  // Restarts of the interval that the last decision was about, that one included.
  std::size_t restarts() const { return restarts_.size(); }

 private:
  std::size_t count_;
  std::chrono::seconds interval_;
  std::chrono::seconds delay_;
  std::deque<Clock::time_point> restarts_;  // oldest first
};

}  // namespace controller
