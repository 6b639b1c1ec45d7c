// The code page of the host is Latin-1: a byte is a character.
#include "internal/AnsiText.h"

namespace tessel::internal {

std::u16string utf16FromAnsi(std::string_view text) {
  std::u16string result;
  for (const char byte : text) result += static_cast<unsigned char>(byte);
  return result;
}

bool ansiFromUtf16(std::u16string_view text, std::string& ansi) {
  constexpr char16_t kLast = 0xFF;
  ansi.clear();
  for (const char16_t unit : text) {
    if (unit > kLast) return false;
    ansi += static_cast<char>(unit);
  }
  return true;
}

}  // namespace tessel::internal
