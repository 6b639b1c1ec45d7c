// The one flag that a disabled trace point looks at.
#pragma once

#include <atomic>
#include <string>

namespace tessel::internal {

// True once trace is available or a debug level is set: until then no descriptor is on.
extern std::atomic<bool> traceSwitch;

// What RAS::isTraceAvailable() says.
extern std::atomic<bool> traceAvailable;

// What RAS::isDebugOn() says about a raw TraceLevel.
bool debugIsOn(int level) noexcept;

// True from the first time that a trace point can have been taken.
extern std::atomic<bool> traceEverOn;

inline bool traceWasEverOn() noexcept { return traceEverOn.load(std::memory_order_relaxed); }

// The dotted prefix of the names that trace shows and specifications give; lives for the process.
const std::string& traceSpecNamePrefix() noexcept;

inline bool traceMayBeOn() noexcept { return traceSwitch.load(std::memory_order_relaxed); }

}  // namespace tessel::internal
