// Texts on their way from and to Java.
//
// Java's interface speaks modified UTF-8: a zero character is the bytes C0 80, and a character beyond U+FFFF is two
// surrogates of three bytes each. The library's own texts are in the ANSI code page, or come from Java and are
// modified UTF-8, or hold characters as \uXXXX escapes.
#pragma once

#include <string>
#include <string_view>

namespace tessel::internal::jni {

// For names of files and accounts. Returns false when a character has no counterpart in the ANSI code page; a zero
// character has none either, since it would end the name. `ansi` then holds the text with such characters as escapes,
// to be shown.
bool ansiFromJava(std::string_view modifiedUtf8, std::string& ansi);

// Whether javaFromNative would change nothing.
bool isPlain(std::string_view text) noexcept;

// Modified UTF-8 that is always valid. Escapes become characters. A text that is well-formed UTF-8 of either kind is
// taken as that; any other is in the ANSI code page.
std::string javaFromNative(std::string_view text);

}  // namespace tessel::internal::jni
