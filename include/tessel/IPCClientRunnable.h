/// @file
#pragma once

#include <string>

#include <tessel/IPCMessage.h>
#include <tessel/NYXRunnable.h>

namespace tessel {

class IPCListener;
class NYXThreadImpl;
class NYXThreadSync;
class RasDescriptor;

/// Serves one connected client on a thread of its own: reads a request, asks the listener, writes the reply.
///
/// Never closes its pipe: whoever made it disconnects and closes the pipe after the thread has ended.
class TESSEL_API IPCClientRunnable : public NYXRunnable {
 public:
  /// What the worker does now, as seen from another thread.
  enum class Activity { reading, processing, writing, leaving };

  /// @param serviceName shown in messages. @param pipeHandle connected, not owned. @param listener not owned. Both must
  /// outlive the thread.
  /// @throws NYXException KTBNV0008.
  IPCClientRunnable(const std::string& serviceName, void* pipeHandle, IPCListener& listener);
  /// The copy has a monitor of its own.
  IPCClientRunnable(const IPCClientRunnable& other);
  /// Copies everything but the monitor, which stays this object's own.
  IPCClientRunnable& operator=(const IPCClientRunnable& other);
  ~IPCClientRunnable() override;

  /// @return the system's error number that ended the worker: 109 after the client left, 0 after shutdown().
  long run() override;

  /// Asks the worker to end after the exchange in progress. Any thread.
  ///
  /// @return whether it is inside an exchange and will end by itself; otherwise it is blocked in its read.
  bool shutdown();

  /// @return the pipe given at construction; not owned.
  void* const& getPipeHandle() const;

  /// Any thread.
  Activity getActivity() const;

  /// Cancels what the worker is blocked in, provided that it is at `activity`: it cannot go on to anything else
  /// meanwhile, so that nothing but that is ever cancelled. Any other thread.
  ///
  /// @param thread the one that runs this worker. @return whether the worker is at `activity`.
  bool cancelAt(Activity activity, NYXThreadImpl& thread);

  /// @return whether the calling thread is a worker of that service.
  static bool isServing(const std::string& serviceName);

 private:
  struct Buffer;

  bool isShutdownRequested() const;
  bool setShutdownRequested(bool requested);
  void setProcessingMessage(bool processing);
  void setActivity(Activity activity);
  long exchangeUntilEnd(Buffer& buffer);
  void lookForRequest(Buffer& buffer) const;
  bool read(Buffer& buffer, long& result);
  void answer(Buffer& buffer);
  void makeRoom(Buffer& buffer) const;
  bool write(Buffer& buffer, long& result);
  void flush(const Buffer& buffer);

  static const RasDescriptor rd;

  std::string serviceName_;
  void* pipeHandle_;
  IPCListener* listener_;
  bool shutdownRequested_ = false;            // guarded by sync_
  bool processingMessage_ = false;            // guarded by sync_
  Activity activity_ = Activity::processing;  // guarded by sync_; the others only while the call may block
  NYXThreadSync* sync_;
};

}  // namespace tessel
