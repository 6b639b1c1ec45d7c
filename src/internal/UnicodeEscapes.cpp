#include "internal/UnicodeEscapes.h"

#include <charconv>

#include "internal/Digits.h"

namespace tessel::internal {
namespace {

constexpr std::string_view kStart = "\\u";
constexpr std::size_t kDigits = 4;
constexpr std::size_t kLength = 6;

bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// The number that the text begins with as an escape; negative when it begins with none.
long escapeAt(std::string_view text) {
  if (text.size() < kLength || text.substr(0, kStart.size()) != kStart) return -1;
  const std::string_view digits = text.substr(kStart.size(), kDigits);
  for (const char c : digits) {
    if (!isHexDigit(c)) return -1;
  }
  long number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  return number;
}

bool isHighSurrogate(long number) { return number >= 0xD800 && number < 0xDC00; }
bool isLowSurrogate(long number) { return number >= 0xDC00 && number < 0xE000; }

// Appends the character that the text begins with as one escape or as a pair. Returns the length that this took,
// none when there is no character.
std::size_t appendEscape(std::string& result, std::string_view text) {
  const long first = escapeAt(text);
  if (first < 0 || isLowSurrogate(first)) return 0;
  if (!isHighSurrogate(first)) {
    appendUtf8(result, static_cast<unsigned>(first));
    return kLength;
  }
  const long second = escapeAt(text.substr(kLength));
  if (!isLowSurrogate(second)) return 0;
  appendUtf8(result, static_cast<unsigned>(0x10000 + (first - 0xD800) * 0x400 + (second - 0xDC00)));
  return 2 * kLength;
}

}  // namespace

void appendUtf8(std::string& text, unsigned codePoint) {
  if (codePoint > 0x10FFFF) return;
  if (codePoint < 0x80) {
    text += static_cast<char>(codePoint);
    return;
  }
  constexpr unsigned kBits = 6;  // of each byte behind the first
  const unsigned more = codePoint < 0x800 ? 1 : codePoint < 0x10000 ? 2 : 3;
  const unsigned lead = 0xF80U >> more & 0xFFU;  // as many ones as the character has bytes
  text += static_cast<char>(lead | codePoint >> (more * kBits));
  for (unsigned left = more; left-- > 0;) text += static_cast<char>(0x80U | (codePoint >> (left * kBits) & 0x3FU));
}

std::string withEscapes(std::u16string_view text) {
  std::string result;
  for (const char16_t unit : text) {
    if (unit >= ' ' && unit <= '~') {
      result += static_cast<char>(unit);
    } else {
      result += kStart;
      appendHex<4>(result, unit);
    }
  }
  return result;
}

std::string withoutEscapes(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (;;) {
    const std::size_t start = text.find(kStart);
    result += text.substr(0, start);
    if (start == std::string_view::npos) return result;
    text.remove_prefix(start);
    std::size_t length = appendEscape(result, text);
    if (length == 0) {
      length = 1;  // the backslash: what follows it may be part of the next escape
      result += text.front();
    }
    text.remove_prefix(length);
  }
}

}  // namespace tessel::internal
