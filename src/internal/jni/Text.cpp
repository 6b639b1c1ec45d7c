#include "internal/jni/Text.h"

#include <algorithm>
#include <optional>

#include "internal/AnsiText.h"
#include "internal/UnicodeEscapes.h"

namespace tessel::internal::jni {
namespace {

constexpr std::string_view kEscape = "\\u";

bool isAscii(char c) { return static_cast<signed char>(c) > 0; }

// The bytes that the lead byte announces behind itself; negative when it is none.
int bytesBehind(unsigned lead) {
  if (lead < 0x80) return 0;
  if (lead >= 0xC0 && lead < 0xE0) return 1;
  if (lead >= 0xE0 && lead < 0xF0) return 2;
  if (lead >= 0xF0 && lead < 0xF8) return 3;
  return -1;
}

bool isShortest(unsigned codePoint, int bytes) {
  constexpr unsigned kFirst[] = {0, 0x80, 0x800, 0x10000};
  const bool modifiedZero = codePoint == 0 && bytes == 1;
  return codePoint >= kFirst[bytes] || modifiedZero;
}

// Takes the character that the text begins with off its front; negative, and nothing taken, when it is malformed.
long takeCodePoint(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const int more = bytesBehind(lead);
  if (more < 0 || text.size() <= static_cast<std::size_t>(more)) return -1;
  unsigned codePoint = more == 0 ? lead : lead & 0x3FU >> more;
  for (int i = 1; i <= more; ++i) {
    const auto byte = static_cast<unsigned char>(text[static_cast<std::size_t>(i)]);
    if ((byte & 0xC0U) != 0x80) return -1;
    codePoint = codePoint << 6 | (byte & 0x3FU);
  }
  if (codePoint > 0x10FFFF || !isShortest(codePoint, more)) return -1;
  text.remove_prefix(static_cast<std::size_t>(more) + 1);
  return static_cast<long>(codePoint);
}

void appendUtf16(std::u16string& text, unsigned codePoint) {
  if (codePoint >= 0x10000) {
    text += static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
    text += static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
  } else {
    text += static_cast<char16_t>(codePoint);
  }
}

// Nothing when the text is not well-formed. Surrogates stand for themselves, as in Java.
std::optional<std::u16string> utf16FromUtf8(std::string_view text) {
  std::u16string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const long codePoint = takeCodePoint(text);
    if (codePoint < 0) return std::nullopt;
    appendUtf16(result, static_cast<unsigned>(codePoint));
  }
  return result;
}

std::string javaFromUtf16(std::u16string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char16_t unit : text) {
    if (unit == 0) {
      result += "\xC0\x80";
    } else {
      appendUtf8(result, unit);
    }
  }
  return result;
}

std::string javaFromText(std::string_view text) {
  const std::optional<std::u16string> utf16 = utf16FromUtf8(text);
  return javaFromUtf16(utf16 ? *utf16 : utf16FromAnsi(text));
}

}  // namespace

bool ansiFromJava(std::string_view modifiedUtf8, std::string& ansi) {
  ansi = modifiedUtf8;
  if (std::all_of(ansi.begin(), ansi.end(), isAscii)) return true;
  const std::u16string utf16 = utf16FromUtf8(modifiedUtf8).value_or(std::u16string(1, u'\0'));
  if (utf16.find(u'\0') == std::u16string::npos && ansiFromUtf16(utf16, ansi)) return true;
  ansi = withEscapes(utf16);
  return false;
}

bool isPlain(std::string_view text) noexcept {
  return std::all_of(text.begin(), text.end(), isAscii) && text.find(kEscape) == std::string_view::npos;
}

std::string javaFromNative(std::string_view text) {
  const std::string java = javaFromText(text);
  return isPlain(java) ? java : javaFromText(withoutEscapes(java));
}

}  // namespace tessel::internal::jni
