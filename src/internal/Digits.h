// Numbers of fixed width, without the C library's formatting: a line of trace has three of them.
#pragma once

#include <cstdint>
#include <string>

namespace tessel::internal {

inline void appendHex(std::string& text, std::uint64_t value, unsigned width, const char* digits = "0123456789abcdef") {
  for (unsigned i = width; i-- > 0;) text += digits[value >> (4 * i) & 0xF];
}

// With leading zeros; a larger number takes the width it needs.
inline void appendDecimal(std::string& text, std::uint64_t value, std::size_t width) {
  const std::string number = std::to_string(value);
  if (number.size() < width) text.append(width - number.size(), '0');
  text += number;
}

}  // namespace tessel::internal
