// A search that is quick when it finds nothing, as in nearly every line of a log.
#pragma once

#include <string_view>

namespace tessel::internal {

// Looks at every byte and sums up in a number, so that the compiler can look at many at once: the C library may go one
// by one.
inline bool containsByte(std::string_view text, char byte) noexcept {
  unsigned char found = 0;
  for (const char c : text) found = static_cast<unsigned char>(found | (c == byte ? 1U : 0U));
  return found != 0;
}

}  // namespace tessel::internal
