#include "internal/LastError.h"

#include <tessel/NYXUtils.h>

namespace tessel::internal {

std::string LastError::text() const { return NYXUtils::getLastErrorMessage(static_cast<int>(number_)); }

}  // namespace tessel::internal
