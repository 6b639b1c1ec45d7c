// One output stream of a child process: its pipe, and the threads that read it.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "internal/pc/UniqueHandle.h"

namespace tessel {
class NYXThreadSync;
class ProcessStreamReaderListener;
}  // namespace tessel

namespace tessel::internal {

struct Pipe {
  UniqueHandle readEnd;
  UniqueHandle writeEnd;
};

// What several threads use of the processes' objects. For assignments only: nothing is waited for while it is held.
NYXThreadSync* processState();

class ProcessStream {
 public:
  ProcessStream() = default;
  // The writing end goes first: a reader that cannot be cancelled then ends all the same if nobody else writes.
  ~ProcessStream();
  ProcessStream(const ProcessStream&) = delete;
  ProcessStream& operator=(const ProcessStream&) = delete;

  Pipe& pipe() noexcept { return pipe_; }

  bool hasReader() const;
  // Throws NYXException; no reader is left then.
  void replaceReader(ProcessStreamReaderListener& listener);

  // Returns when every reader has ended but the one that calls. Once the child was stopped readers do not wait for
  // whoever else holds the pipe.
  void join(const std::atomic<bool>& childStopped) noexcept;

 private:
  struct Reader;
  using Readers = std::vector<std::shared_ptr<Reader>>;

  Readers snapshot() const;
  void stopReaders() noexcept;
  void forgetEnded();

  Pipe pipe_;
  Readers readers_;  // guarded by processState(); the last one is registered, the others may still be in a callback
};

}  // namespace tessel::internal
