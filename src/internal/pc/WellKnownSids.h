// The built-in principals that access lists name. Each is empty on failure, and the thread's last error tells why.
#pragma once

#include "internal/pc/UniqueHandle.h"

namespace tessel::internal {

UniqueSid everyoneSid();
UniqueSid administratorsSid();
UniqueSid usersSid();
UniqueSid guestsSid();

}  // namespace tessel::internal
