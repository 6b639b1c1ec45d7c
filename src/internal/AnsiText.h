// Texts in the system's ANSI code page, which paths, names and the system's own texts are in.
#pragma once

#include <string>
#include <string_view>

namespace tessel::internal {

// Bytes that are no character become replacement characters.
std::u16string utf16FromAnsi(std::string_view text);

// Returns false when a character has no counterpart; a similar one is none.
bool ansiFromUtf16(std::u16string_view text, std::string& ansi);

}  // namespace tessel::internal
