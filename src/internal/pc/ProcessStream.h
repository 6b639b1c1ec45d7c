// One output stream of a child process: its pipe, and the threads that read it.
#pragma once

#include <atomic>
#include <list>
#include <memory>

#include "internal/pc/ReaderThread.h"
#include "internal/pc/UniqueHandle.h"

namespace tessel {
class NYXThreadSync;
}  // namespace tessel

namespace tessel::internal {

struct Pipe {
  UniqueHandle readEnd;
  UniqueHandle writeEnd;
};

// What several threads use of the processes' objects. For assignments only: while it is held nothing is waited for,
// traced or destroyed.
NYXThreadSync* processState();

class ProcessStream {
 public:
  ProcessStream() = default;
  // After endReaders(). A reader that has not ended needs its objects and the handle: they are left behind.
  ~ProcessStream();
  ProcessStream(const ProcessStream&) = delete;
  ProcessStream& operator=(const ProcessStream&) = delete;

  Pipe& pipe() noexcept { return pipe_; }

  bool hasReader() const;
  // Whether the calling thread is one of the readers.
  bool isReadHere() const;
  // Throws NYXException; no reader is left then.
  void replaceReader(ProcessStreamReaderListener& listener);

  // Both return when every reader is over but the one that calls, also those that listeners register meanwhile.
  void endReaders() noexcept;
  // Once the child was stopped readers do not wait for whoever else holds the pipe. Not for a thread that reads a
  // stream of the same child: two of them would wait for each other.
  void join(const std::atomic<bool>& childStopped) noexcept;

 private:
  using Readers = std::list<std::shared_ptr<ReaderThread>>;

  std::shared_ptr<ReaderThread> readerToEnd() const noexcept;
  void forgetEnded() noexcept;

  Pipe pipe_;
  ReaderThread::Captured captured_ = std::make_shared<std::atomic<bool>>(false);
  Readers readers_;  // guarded by processState(); the last one is registered, the others may still be in a callback
};

}  // namespace tessel::internal
