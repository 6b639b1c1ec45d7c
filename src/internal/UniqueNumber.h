// The number that tells the files of several processes apart.
#pragma once

#include <limits>

namespace tessel::internal {

inline constexpr long kNoUniqueNumber = std::numeric_limits<int>::max();

// The first number from 0 on that is usable, `end` when none below it is.
template <class IsUsable>
long firstUsable(const IsUsable& isUsable, long end = kNoUniqueNumber) {
  long number = 0;
  while (number < end && !isUsable(number)) ++number;
  return number;
}

}  // namespace tessel::internal
