// Trace switched on for a scope.
#pragma once

#include <string>

#include <tessel/RAS.h>

namespace tessel::test {

// The diagnostics are the process's: whatever a test switches is off again behind it.
class TraceScope {
 public:
  explicit TraceScope(const std::string& specification) { RAS::setLevel(specification); }
  ~TraceScope() {
    RAS::setLevel("=OFF");
    RAS::setDebugLevel(TraceLevel::OFF);
  }
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;
};

}  // namespace tessel::test
