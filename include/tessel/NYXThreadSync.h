/// @file
#pragma once

#include <tessel/Export.h>

namespace tessel {

/// A recursive monitor: a lock with wait and notifyAll. Hold it through a Synchronize guard.
class TESSEL_API NYXThreadSync {
 public:
  NYXThreadSync();
  NYXThreadSync(const NYXThreadSync& other);
  NYXThreadSync& operator=(const NYXThreadSync& other);
  virtual ~NYXThreadSync();

  /// Blocks until the calling thread holds the monitor. The holder may lock again.
  virtual void lock() = 0;

  /// Undoes one lock().
  virtual void unlock() = 0;

  /// Releases every hold of the caller, waits for notifyAll(), takes the holds back.
  ///
  /// @param timeoutMillis milliseconds, taken as an unsigned 32-bit number: -1 waits without limit.
  /// @return 0 when notified, -1 after the time-out. A wait can also end with 0 by a notification meant for
  ///         another waiter: test the condition in a loop.
  /// @throws NYXException KTBNV0171 when the caller does not hold the monitor, KTBNV0010 when the event cannot be
  ///         reset (still held), KTBNV0011 or KTBNV0012 when waiting fails (no longer held, although a guard
  ///         will still call unlock()).
  virtual int wait(long timeoutMillis) = 0;

  /// As wait(-1).
  virtual void wait() = 0;

  /// Wakes every thread that is waiting now. Needs no hold. @throws NYXException KTBNV0009.
  virtual void notifyAll() = 0;
};

}  // namespace tessel
