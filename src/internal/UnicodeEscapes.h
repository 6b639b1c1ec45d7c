// Unicode escapes as they stand in Java texts.
#pragma once

#include <string>
#include <string_view>

namespace tessel::internal {

// Nothing above 0x10FFFF.
void appendUtf8(std::string& text, unsigned codePoint);

// Text in ASCII: every other character, and those that are no sign, as escapes.
std::string withEscapes(std::u16string_view text);

// A backslash, "u" and four hexadecimal digits become the character; two of them that are a surrogate pair become
// one. Everything else stays as it is.
std::string withoutEscapes(std::string_view text);

}  // namespace tessel::internal
