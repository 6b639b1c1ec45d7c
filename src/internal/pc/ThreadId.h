// The calling thread's id without a call.
#pragma once

#include "internal/pc/Platform.h"

namespace tessel::internal {

// Reads the thread's environment block, as the system's function does: a monitor asks twice in the few nanoseconds of
// a lock and an unlock.
inline DWORD currentThreadId() noexcept {
  constexpr DWORD kThreadIdOffset = 0x48;
  return __readgsdword(kThreadIdOffset);
}

}  // namespace tessel::internal
