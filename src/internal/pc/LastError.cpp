#include "internal/LastError.h"

#include "internal/pc/Platform.h"

namespace tessel::internal {

LastError::LastError() noexcept : number_(GetLastError()) {}

}  // namespace tessel::internal
