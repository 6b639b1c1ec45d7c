#include "internal/LastError.h"

#include <cerrno>

namespace tessel::internal {

LastError::LastError() noexcept : number_(static_cast<unsigned long>(errno)) {}

}  // namespace tessel::internal
