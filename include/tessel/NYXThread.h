/// @file
#pragma once

#include <tessel/Export.h>

namespace tessel {

class NYXRunnable;

/// An operating-system thread that runs one NYXRunnable. Made as an NYXThreadImpl.
class TESSEL_API NYXThread {
 public:
  /// A copy has the same runnable.
  NYXThread(const NYXThread& other);
  NYXThread& operator=(const NYXThread& other);
  virtual ~NYXThread();

  /// Starts the thread. Once in the life of the object. @throws NYXException KTBNV0013 when the system refuses.
  virtual void start() = 0;

  /// Terminates the thread at once with exit code 0, wherever it is. @throws NYXException KTBNV0014.
  ///
  /// Destructors do not run, memory and locks that the thread holds stay taken: a thread killed inside the heap
  /// or a trace point freezes the whole process. End the work another way whenever there is one.
  virtual void stop() = 0;

  /// Waits without limit until the thread has ended. @throws NYXException KTBNV0015 or KTBNV0016.
  virtual void join() = 0;

  /// @return whether the thread runs. @throws NYXException KTBNV0017, also before start().
  virtual bool isAlive() = 0;

  /// @return 259 while the thread runs, else what run() returned, -1 after an uncaught NYXException, 0 after
  ///         stop(). @throws NYXException KTBNV0017, also before start().
  virtual long getExitCode() = 0;

  /// @return the work; not owned.
  NYXRunnable* getRunnable();

  /// @return the operating-system id of the calling thread. Ids of ended threads are used again.
  static unsigned long getCurrentThreadId();

 protected:
  /// @param runnable not owned; must live as long as the thread runs.
  explicit NYXThread(NYXRunnable* runnable);

 private:
  NYXRunnable* runnable_;
};

}  // namespace tessel
