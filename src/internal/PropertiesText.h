// The format of a properties file.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace tessel::internal {

// One pass over the text; the first entry of a key wins.
std::map<std::string, std::string> parseProperties(std::string_view text);

}  // namespace tessel::internal
