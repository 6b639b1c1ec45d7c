// Threads of a test.
#pragma once

#include <functional>
#include <future>
#include <utility>

#include <tessel/NYXRunnable.h>

namespace tessel::test {

// A runnable made of a function.
class Work : public NYXRunnable {
public:
  explicit Work(std::function<long()> body) : body_(std::move(body)) {}
  long run() override { return body_(); }

private:
  std::function<long()> body_;
};

// Calls on another thread, waits, and hands on the result or the exception.
template <class Call>
auto onOtherThread(const Call& call) {
  return std::async(std::launch::async, call).get();
}

}  // namespace tessel::test
