/// @file
#pragma once

#include <list>
#include <memory>
#include <string>

#include <tessel/NYXRunnable.h>

namespace tessel {

class IPCClientRunnable;
class IPCListener;
class NYXThreadImpl;
class NYXThreadSync;
class RasDescriptor;

/// Accepts the clients of a server, one after the other, and gives each a worker thread.
class TESSEL_API IPCClientConnectionListener : public NYXRunnable {
 public:
  /// @param name the service. @param listener not owned; must outlive the thread.
  /// @param maxConnections workers at once; negative for no limit. @param adminGroupName traced only. @throws
  /// NYXException KTBNV0008.
  IPCClientConnectionListener(const std::string& name, IPCListener& listener, int maxConnections,
                              const std::string& adminGroupName);
  /// Copies name, listener and limit; the copy has a monitor of its own and has never run.
  IPCClientConnectionListener(const IPCClientConnectionListener& other);
  /// Copies name and limit, clears the flags and makes a new monitor. Not while this listener's thread runs.
  IPCClientConnectionListener& operator=(const IPCClientConnectionListener& other);
  /// Calls shutdown(). The thread must have ended.
  ~IPCClientConnectionListener() override;

  /// The listener thread. @return 0 after an orderly end, else the system's error number that ended it.
  long run() override;

  /// Asks the listener to end and wakes it by connecting to its pipe.
  ///
  /// @return false when it could not be woken: its accept must then be cancelled.
  bool shutdown();

  /// Waits once, at most `timeoutMillis` milliseconds (-1: without limit), for the pipe to exist or the thread to
  /// give up. Any thread. @return whether the listener is running. @throws NYXException as NYXThreadSync::wait.
  bool waitRunning(long timeoutMillis) const;

  /// @return the text of the failure that ended the listener; empty otherwise, and when a later instance of the pipe
  ///         could not be made: that is an event. Only once it has ended.
  std::string getErrorMessage() const;

  /// @return whether run() has left its loop, successfully or not. Any thread.
  bool hasEnded() const;

 private:
  struct Worker;
  struct Instance;

  bool isRunning() const;
  void setRunning(bool running);
  bool isShutdownRequested() const;
  void setShutdownRequested(bool requested);
  void setEnded();
  void notify() noexcept;

  long listen();
  long serveInstances(void* securityAttributes);
  std::unique_ptr<Instance> createInstance(void* securityAttributes, bool first, long& error);
  void serveClient(Instance& instance, unsigned& failures);
  bool accept(const Instance& instance, unsigned long& error) const;
  void reject(Instance instance, const std::string& message);
  bool isFull() const;
  bool makeRoom();
  bool hasLeavingWorker() const;
  void reapFinishedWorkers();
  void startWorker(Instance instance);
  void stopWorkers();
  void pauseAfterFailures(unsigned failures);

  static const RasDescriptor rd;

  std::string serviceName_;
  IPCListener* listener_;
  int maxConnections_;
  std::list<std::unique_ptr<Worker>> clientThreads_;  // the listener thread's own
  bool running_ = false;                              // guarded by sync_
  bool ended_ = false;                                // guarded by sync_
  bool shutdownRequested_ = false;                    // guarded by sync_
  std::unique_ptr<NYXThreadSync> sync_;
  std::string errorMessage_;                // written before ended_ is set, read afterwards
  std::unique_ptr<Instance> lastInstance_;  // of the last accept; closed with this object
  std::unique_ptr<Instance> dropped_;       // closed once the next instance exists
};

}  // namespace tessel
