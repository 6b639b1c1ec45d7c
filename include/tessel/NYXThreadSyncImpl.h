/// @file
#pragma once

#include <tessel/NYXThreadSync.h>

namespace tessel {

class RasDescriptor;

/// The monitor on a critical section and a manual-reset event; the library's only locking primitive.
///
/// The event is never closed: a thread may still be about to look at it when the object goes. A copy is a new,
/// free monitor, since a copied critical section must not be used. Traces only what it throws, so that it can be
/// used below the trace facility itself.
class TESSEL_API NYXThreadSyncImpl : public NYXThreadSync {
 public:
  /// @throws NYXException KTBNV0008 when the event cannot be created.
  NYXThreadSyncImpl();
  NYXThreadSyncImpl(const NYXThreadSyncImpl& other);
  /// Keeps this monitor as it is.
  NYXThreadSyncImpl& operator=(const NYXThreadSyncImpl& other);
  ~NYXThreadSyncImpl() override;

  void lock() override;

  /// Undoes one lock() of the holder. Called by a stranger it leaves the critical section all the same, but keeps
  /// the record of the holder; when nobody is inside the section it does nothing.
  void unlock() override;

  int wait(long timeoutMillis) override;
  void wait() override;

  /// The event stays set until the next wait() resets it, so that a thread that begins to wait later does not see
  /// this notification. A thread that begins to wait while a notified one has not come back yet may return 0 at
  /// once: that is how two waiters never lose a wake-up.
  void notifyAll() override;

  /// Takes the monitor if it is free or already the caller's. @return whether it was taken.
  bool tryLock();

  /// As tryLock(), but waits for it. @param timeoutMillis milliseconds, not negative.
  bool tryLock(long timeoutMillis);

 private:
  struct State;

  static const RasDescriptor rd;

  State* state_ = nullptr;
};

}  // namespace tessel
