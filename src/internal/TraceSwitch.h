// The one flag that a disabled trace point looks at.
#pragma once

#include <atomic>

namespace tessel::internal {

// True once trace is available or a debug level is set: until then no descriptor is on.
extern std::atomic<bool> traceSwitch;

// True from the first time that a trace point can have been taken.
extern std::atomic<bool> traceEverOn;

inline bool traceWasEverOn() noexcept { return traceEverOn.load(std::memory_order_relaxed); }

inline bool traceMayBeOn() noexcept { return traceSwitch.load(std::memory_order_relaxed); }

}  // namespace tessel::internal
