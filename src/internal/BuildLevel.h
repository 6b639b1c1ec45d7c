// The text that tells which build of the library this is.
#pragma once

#include <string>

namespace tessel::internal {

// The version and the commit's short hash, as "0.1.0-1a2b3c4".
std::string buildLevel();

}  // namespace tessel::internal
