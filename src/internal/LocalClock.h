// Local time as text.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>

namespace tessel::internal {

struct LocalClock {
  std::int64_t second = std::numeric_limits<std::int64_t>::min();  // since the epoch
  std::array<char, 32> time{};                                     // HH:MM:SS
  std::array<char, 48> date{};                                     // DD/MM/YYYY
  std::array<char, 64> zone{};                                     // "???" when the system names none

  std::string_view timeText() const noexcept { return {time.data(), 8}; }
};

// Converted once for each second and thread: a conversion costs as much as writing half a line. The result is the
// thread's own until it asks for another second.
const LocalClock& localClock(std::int64_t secondsSinceEpoch);

}  // namespace tessel::internal
