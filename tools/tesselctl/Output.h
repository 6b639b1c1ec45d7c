// What the tool writes: data to standard output, everything for the operator's eyes to standard error. Each text is
// written at once and past the C library, which would send it to a terminal letter by letter.
#pragma once

#include <string>
#include <string_view>

namespace tesselctl {

// To standard output as it is; a console shows it as what it is, in UTF-8 or the code page. Throws std::runtime_error
// when it cannot be written, as behind a pipe whose reader has gone.
void printText(std::string_view text);

// The text and a line end. Throws like printText.
void printLine(const std::string& text);

// What another program has written, also to a console. Throws like printText.
void printBytes(std::string_view bytes);

// To standard error, in UTF-8 and without the escapes of catalogue texts; nothing is done when it cannot be written.
void printNote(const std::string& text);

// "tesselctl: ", the text and a line end to standard error.
void printError(const std::string& text);

bool outputIsTerminal();
bool errorOutputIsTerminal();

}  // namespace tesselctl
