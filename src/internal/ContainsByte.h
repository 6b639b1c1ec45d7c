// Searches for a byte that look at many at once, where those of the C library may go one by one.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace tessel::internal {

// Quick when it finds nothing, as in nearly every line of a log: looks at every byte and sums up in a number.
inline bool containsByte(std::string_view text, char byte) noexcept {
  unsigned char found = 0;
  for (const char c : text) found = static_cast<unsigned char>(found | (c == byte ? 1U : 0U));
  return found != 0;
}

// The first place of the byte from there on; npos when there is none.
inline std::size_t findByte(std::string_view text, char byte, std::size_t from = 0) noexcept {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kHighs = 0x8080808080808080;
  const std::uint64_t wanted = kOnes * static_cast<unsigned char>(byte);
  std::size_t i = from;
  for (; i + sizeof(std::uint64_t) <= text.size(); i += sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + i, sizeof word);
    word ^= wanted;
    if (((word - kOnes) & ~word & kHighs) != 0) break;  // one of the bytes has become zero
  }
  for (; i < text.size(); ++i) {
    if (text[i] == byte) return i;
  }
  return std::string_view::npos;
}

}  // namespace tessel::internal
