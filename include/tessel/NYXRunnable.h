/// @file
#pragma once

#include <tessel/Export.h>

namespace tessel {

/// A unit of work for an NYXThread.
class TESSEL_API NYXRunnable {
 public:
  NYXRunnable();
  NYXRunnable(const NYXRunnable& other);
  NYXRunnable& operator=(const NYXRunnable& other);
  virtual ~NYXRunnable();

  /// Does the work on the new thread.
  ///
  /// @return the thread's exit code.
  /// @throws NYXException an escaping NYXException is reported to the event log, captured, and makes the exit code
  ///         -1. Any other exception that escapes ends the process, after its class and text were written to
  ///         standard error.
  virtual long run() = 0;
};

}  // namespace tessel
