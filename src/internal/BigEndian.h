// 32-bit integers as they stand on the wire.
#pragma once

#include <cstdint>

namespace tessel::internal {

inline std::uint32_t readBigEndian(const unsigned char* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

inline void writeBigEndian(unsigned char* bytes, std::uint32_t value) {
  bytes[0] = static_cast<unsigned char>(value >> 24);
  bytes[1] = static_cast<unsigned char>(value >> 16);
  bytes[2] = static_cast<unsigned char>(value >> 8);
  bytes[3] = static_cast<unsigned char>(value);
}

}  // namespace tessel::internal
