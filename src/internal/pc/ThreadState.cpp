#include "internal/ThreadState.h"

#include <type_traits>

#include "internal/pc/Platform.h"

#ifdef __MINGW32__
// Where the run-time keeps the data that each thread has a copy of.
extern "C" char* _tls_start;          // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" unsigned long _tls_index;  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
#endif

namespace tessel::internal {

// Nobody destroys the copies, and they are aligned as the heap aligns.
static_assert(std::is_trivially_copyable_v<ThreadState> && alignof(ThreadState) <= alignof(void*));

#ifdef __MINGW32__

namespace {

// The compiler has no thread_local of the system's own, only one that asks the run-time each time. This is what it
// would be: the system's loader gives each thread a copy of the section.
[[gnu::section(".tls$STATE")]] constinit ThreadState initial;

// The place of the copies of all modules in what the system keeps for each thread.
constexpr unsigned long kCopies = 0x58;

}  // namespace

// The compiler takes so low a number for a null pointer.
#pragma GCC diagnostic ignored "-Warray-bounds"

ThreadState& threadState() noexcept {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the processor's register holds a number
  char* const copy = reinterpret_cast<char**>(__readgsqword(kCopies))[_tls_index];
  return *reinterpret_cast<ThreadState*>(copy +
                                         (reinterpret_cast<char*>(&initial) - reinterpret_cast<char*>(&_tls_start)));
}

#else

namespace {

constinit thread_local ThreadState state;

}  // namespace

ThreadState& threadState() noexcept { return state; }

#endif

}  // namespace tessel::internal
