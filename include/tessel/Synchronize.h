/// @file
#pragma once

#include <tessel/Export.h>

namespace tessel {

class NYXThreadSync;

/// Holds a monitor for a scope. Not copyable: a copy would unlock what it never locked.
class TESSEL_API Synchronize {
 public:
  /// @param sync locked at once; not owned. Null makes the guard do nothing.
  explicit Synchronize(NYXThreadSync* sync);
  Synchronize(const Synchronize& other) = delete;
  Synchronize& operator=(const Synchronize& other) = delete;
  virtual ~Synchronize();

 private:
  NYXThreadSync* sync_;
};

}  // namespace tessel
