// What the library keeps for each thread.
#pragma once

#include <string>

#include "internal/LocalClock.h"

namespace tessel::internal {

class KeptOnThread;

// All in one place, so that each layer looks it up once for a trace record. Needs no destructor: a thread's end runs
// none.
struct ThreadState {
  // How many of these scopes the thread is inside; see DiagnosticsLock.h.
  unsigned noBlockingTrace = 0;
  unsigned noTraceInJava = 0;
  unsigned insideLogFile = 0;
  // Of Trace.
  unsigned deferredExits = 0;
  bool waitRanOut = false;
  // The innermost publication of Logger, which alone knows its type.
  void* publication = nullptr;
  // Of a thread that serves a client: what it keeps between requests, and the name of the service.
  KeptOnThread* kept = nullptr;
  const std::string* serviceName = nullptr;
  LocalClock clock;
};

// The calling thread's own.
ThreadState& threadState() noexcept;

}  // namespace tessel::internal
