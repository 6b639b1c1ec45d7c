// The encodings that the tool meets. Its own texts and those of the library are printed in UTF-8; names of files, and
// what it prints of data, are the bytes that they are.
#pragma once

#include <string>

namespace tesselctl {

// A word of the command line, which is in the code page.
std::string textOfArgument(const std::string& argument);

// A text that is in UTF-8 or in the code page.
std::string textOfBytes(const std::string& bytes);

// A text of the library: without its escapes, and in UTF-8 although paths in it are in the code page.
std::string textOfLibrary(const std::string& text);

// For comparing words of any language without regard to upper and lower case.
std::string foldCase(const std::string& text);

// For the system's own calls.
std::wstring wideText(const std::string& text);

}  // namespace tesselctl
