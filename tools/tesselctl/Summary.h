// What a run of requests came to.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace tesselctl {

class Summary {
 public:
  using Duration = std::chrono::steady_clock::duration;

  // Bytes are those of the texts, without the header of a message.
  void addExchange(std::size_t bytesSent, std::size_t bytesReceived, Duration roundTrip);
  void addFailure() { ++failures_; }

  std::uint64_t failures() const { return failures_; }

  // Lines of text without the last line end.
  std::string text() const;

 private:
  std::uint64_t bytesSent_ = 0;
  std::uint64_t bytesReceived_ = 0;
  std::uint64_t failures_ = 0;
  std::vector<Duration> roundTrips_;
};

}  // namespace tesselctl
