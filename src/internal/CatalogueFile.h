// The format of a message catalogue file, apart from where it lies.
#pragma once

#include <functional>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace tessel::internal {

using Messages = std::map<std::string, std::string, std::less<>>;

// Lower-cased locale name to file suffix, as "fr-fr" to "_fr.properties".
std::string catalogueSuffix(const std::string& localeName);

// Every suffix that there is, each once.
std::vector<std::string> catalogueSuffixes();

// Reads every message line; the first definition of a key wins.
Messages readCatalogue(std::istream& file);

}  // namespace tessel::internal
