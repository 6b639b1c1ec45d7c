/// @file
#pragma once

#include <tessel/NYXThread.h>

namespace tessel {

class RasDescriptor;

/// The Windows thread.
///
/// The thread handle stays open for the life of the process, also after the object is gone: isAlive() and
/// getExitCode() of copies keep their meaning. One owner calls the operations; isAlive(), getExitCode() and
/// cancelBlockedCall() may be called from any thread after start().
class TESSEL_API NYXThreadImpl : public NYXThread {
 public:
  /// @param runnable not owned; must live as long as the thread runs.
  explicit NYXThreadImpl(NYXRunnable* runnable);
  /// A copy watches the same thread.
  NYXThreadImpl(const NYXThreadImpl& other);
  NYXThreadImpl& operator=(const NYXThreadImpl& other);
  /// Neither stops nor joins the thread: callers join first.
  ~NYXThreadImpl() override;

  void start() override;
  void stop() override;
  void join() override;
  bool isAlive() override;
  long getExitCode() override;

  /// Waits at most `milliseconds`. @return whether the thread has ended. @throws NYXException KTBNV0015, KTBNV0016.
  bool joinFor(unsigned long milliseconds);

  /// Makes a read, write, flush or accept in which the thread is blocked right now fail with error 995. Does
  /// nothing when the thread is not blocked: repeat until the thread has seen it.
  void cancelBlockedCall() noexcept;

  /// As NYXThread::getCurrentThreadId().
  static unsigned long getCurrentThreadId();

 private:
  static unsigned long clientThreadWrapper(void* runnable) noexcept;

  static const RasDescriptor rd;

  void* threadHandle_ = nullptr;
};

}  // namespace tessel
