/// @file
#pragma once

#include <tessel/Export.h>

namespace tessel {

class NYXThreadSync;

/// Holds a monitor for a scope.
///
/// A copy refers to the same monitor and holds it once more, so that each guard undoes what it did. Not to be shared
/// by threads: the thread that made a guard destroys it.
class TESSEL_API Synchronize {
 public:
  /// @param sync locked at once; not owned, must outlive the guard. Null makes the guard do nothing.
  explicit Synchronize(NYXThreadSync* sync);
  Synchronize(const Synchronize& other);
  /// Takes the other's monitor, then lets go of the one held so far.
  Synchronize& operator=(const Synchronize& other);
  /// Unlocks.
  virtual ~Synchronize();

 private:
  NYXThreadSync* sync_;
};

}  // namespace tessel
