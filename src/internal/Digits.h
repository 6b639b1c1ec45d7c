// Numbers of fixed width, without the C library's formatting: a line of trace has several of them.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace tessel::internal {

template <std::size_t Width>
void appendHex(std::string& text, std::uint64_t value, const char* digits = "0123456789abcdef") {
  // In halves: the compiler would read back at once what it has stored in two parts, which the processor cannot
  // forward.
  constexpr std::size_t kHalf = 8;
  if constexpr (Width > kHalf) {
    appendHex<Width - kHalf>(text, value >> 4 * kHalf, digits);
    appendHex<kHalf>(text, value, digits);
  } else {
    std::array<char, Width> shown{};
    for (std::size_t i = Width; i-- > 0; value >>= 4) shown[i] = digits[value & 0xF];
    text.append(shown.data(), Width);
  }
}

// With leading zeros; a larger number takes the width it needs.
template <std::size_t Width>
void appendDecimal(std::string& text, std::uint64_t value) {
  std::array<char, Width> shown{};
  std::uint64_t rest = value;
  for (std::size_t i = Width; i-- > 0; rest /= 10) shown[i] = static_cast<char>('0' + rest % 10);
  if (rest == 0) {
    text.append(shown.data(), Width);
  } else {
    text += std::to_string(value);
  }
}

}  // namespace tessel::internal
