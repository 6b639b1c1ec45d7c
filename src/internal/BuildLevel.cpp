#include "internal/BuildLevel.h"

#include "internal/BuildInfo.h"

namespace tessel::internal {

std::string buildLevel() { return TESSEL_BUILD_LEVEL; }

}  // namespace tessel::internal
