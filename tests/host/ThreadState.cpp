#include "internal/ThreadState.h"

namespace tessel::internal {
namespace {

constinit thread_local ThreadState state;

}  // namespace

ThreadState& threadState() noexcept { return state; }

}  // namespace tessel::internal
