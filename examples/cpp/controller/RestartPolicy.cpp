#include "RestartPolicy.h"

namespace controller {

RestartPolicy::RestartPolicy(int count, std::chrono::seconds interval, std::chrono::seconds delay)
    : count_(static_cast<std::size_t>(count)), interval_(interval), delay_(delay) {}

RestartPolicy::Decision RestartPolicy::decide(Clock::time_point now) {
  while (!restarts_.empty() && now - restarts_.front() >= interval_) restarts_.pop_front();
  if (restarts_.size() < count_) {
    restarts_.push_back(now);
    return Decision::restart;
  }
  if (delay_ < std::chrono::seconds::zero()) return Decision::giveUp;
  restarts_.clear();
  return Decision::restartLater;
}

}  // namespace controller
