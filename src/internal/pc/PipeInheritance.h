// Which pipe ends a child process inherits.
#pragma once

#include <tessel/Synchronize.h>

#include "internal/DiagnosticsLock.h"
#include "internal/pc/Platform.h"

namespace tessel::internal {

// Held while a pipe end of any process object is inheritable. A child started meanwhile would inherit the ends of
// others, and their output would not end before that child does. Whoever holds it may report a failure.
class InheritanceLock {
 public:
  InheritanceLock();

 private:
  NoBlockingTrace mark_;
  Synchronize guard_;
};

// Both leave the reason of a failure in the thread's last error.
inline bool disinherit(HANDLE handle) noexcept { return SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0) != 0; }
inline bool inherit(HANDLE handle) noexcept {
  return SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT) != 0;
}

}  // namespace tessel::internal
