// The grammar of trace specifications, apart from what it switches.
#pragma once

#include <string>
#include <vector>

namespace tessel::internal {

// The parts of the text that are not empty.
std::vector<std::string> nonEmptyParts(const std::string& text, char separator);

// Letters of ASCII only, whatever the locale.
std::string upperCase(const std::string& word);

// The name of the logger that a name of a specification means: what stands behind the prefix, empty for the prefix
// itself and for all that lies above it. Returns false when the name is outside the prefix.
bool relativeName(const std::string& name, const std::string& prefix, std::string& key);

}  // namespace tessel::internal
