// Threads of a test.
#pragma once

#include <functional>
#include <optional>
#include <type_traits>
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

// Calls on another thread and waits. An exception is thrown on. Nothing stays open: a std::thread would leave what
// the run-time keeps for the next one, and handles could not be counted.
void runOnOtherThread(const std::function<void()>& call);

// The same with the call's result.
template <class Call>
auto onOtherThread(const Call& call) {
  using Result = std::invoke_result_t<const Call&>;
  if constexpr (std::is_void_v<Result>) {
    runOnOtherThread(call);
  } else {
    std::optional<Result> result;
    runOnOtherThread([&] { result.emplace(call()); });
    return *std::move(result);
  }
}

}  // namespace tessel::test
