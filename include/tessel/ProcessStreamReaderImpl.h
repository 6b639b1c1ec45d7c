/// @file
#pragma once

#include <atomic>
#include <vector>

#include <tessel/NYXRunnable.h>
#include <tessel/ProcessStreamReader.h>

namespace tessel {

class NYXThreadImpl;

/// Reads a pipe on a thread of its own until the other end is closed or the reader is told to end.
class TESSEL_API ProcessStreamReaderImpl : public ProcessStreamReader, public NYXRunnable {
 public:
  /// @param handle the end to read; not owned, must outlive the thread. @param listener as for ProcessStreamReader.
  ProcessStreamReaderImpl(void* handle, ProcessStreamReaderListener& listener);
  ~ProcessStreamReaderImpl() override;

  /// @return the system's error number that ended the reader: 109 when the other end is closed, 0 after a read of no
  ///         bytes, 995 or 0 when it was told to end.
  long run() override;

  /// A read in progress goes on: see cancelRead().
  void stop() override;

  /// Asks the reader to deliver what is in the pipe by now and to end. Any thread.
  void drain();

  /// Cancels the read in which the reader is blocked, and nothing that its listener does. Any other thread; to be
  /// repeated until the reader has seen that it is to end.
  /// @param thread the one that runs this reader. @return whether the reader was in its read.
  bool cancelRead(NYXThreadImpl& thread);

  /// @return whether the calling thread is the one that runs this reader now.
  bool isRunningHere() const;

 private:
  enum class Ending { none, now, drained };
  enum class Activity { other, reading, cancelled };

  bool mayRead();
  unsigned long read(std::vector<char>& buffer, long& result);
  void leaveRead();

  static const RasDescriptor rd;

  void* handle_;
  std::atomic<Ending> ending_{Ending::none};
  std::atomic<Activity> activity_{Activity::other};
  std::atomic<unsigned long> threadId_{0};
  bool counted_ = false;      // whether unread_ was asked for; of the reader's thread, like it
  unsigned long unread_ = 0;  // bytes that are still to be delivered before the reader ends
};

}  // namespace tessel
