// The encodings that the tool meets. Its own texts and what it prints are UTF-8.
#pragma once

#include <string>

namespace tesselctl {

// A word of the command line, which is in the code page.
std::string textOfArgument(const std::string& argument);

// A text of the library: without its escapes, and in UTF-8 although paths in it are in the code page.
std::string textOfLibrary(const std::string& text);

// For comparing words of any language without regard to upper and lower case.
std::string foldCase(const std::string& text);

// For the system's own calls.
std::wstring wideText(const std::string& text);

}  // namespace tesselctl
