// One thread that reads an output stream of a child process for one listener.
#pragma once

#include <atomic>
#include <memory>

#include <tessel/NYXRunnable.h>
#include <tessel/NYXThreadImpl.h>
#include <tessel/ProcessStreamReaderImpl.h>
#include <tessel/ProcessStreamReaderListener.h>

#include "internal/pc/Platform.h"

namespace tessel::internal {

// Stands between the reader and its listener, which it no longer calls once the reader was given up.
class ReaderThread : private NYXRunnable, private ProcessStreamReaderListener {
 public:
  // Whether a listener of the stream has thrown; of all its readers, and also of one that is left behind.
  using Captured = std::shared_ptr<std::atomic<bool>>;

  ReaderThread(HANDLE handle, ProcessStreamReaderListener& listener, Captured captured);
  ReaderThread(const ReaderThread&) = delete;
  ReaderThread& operator=(const ReaderThread&) = delete;
  ~ReaderThread() override;

  // The thread does nothing before letGo(): until then its listener could look for it in vain. Throws NYXException.
  void start() { thread_.start(); }
  void letGo() noexcept { mayRun_ = true; }

  bool isRunningHere() const { return work_.isRunningHere(); }
  // Whether the listener is called no more: the thread has ended, or was given up.
  bool isOver() const noexcept { return state_ != State::running; }
  // Whether the thread uses nothing any more; not knowing counts as no. The second one asks the system.
  bool isKnownToHaveEnded() const noexcept { return state_ == State::ended; }
  bool hasEnded() noexcept;

  // The following are not for the thread itself. Returns whether it is over.
  bool isOverWithin(unsigned long milliseconds) noexcept;
  // Ends it as soon as it has delivered what it has read, or what is in the pipe as well. Waits for the listener as
  // long as it takes, but not for a read: a thread that cannot be cancelled is given up.
  void end() noexcept;
  void drainAndEnd() noexcept;

  // Lets the thread end without calling its listener again, which may be the caller.
  void stop() noexcept { work_.stop(); }
  // The object refers to itself from now on.
  void leaveBehind(const std::shared_ptr<ReaderThread>& self) noexcept { self_ = self; }

 private:
  enum class State { running, ended, givenUp };
  enum class Delivery { none, underWay, forbidden };

  long run() override;
  void processOutput(const std::string& data) override;
  bool endsWithin(unsigned long milliseconds);
  void cancel() noexcept;
  void giveUp() noexcept;

  ProcessStreamReaderListener& listener_;
  Captured captured_;
  ProcessStreamReaderImpl work_;
  NYXThreadImpl thread_;
  std::atomic<bool> mayRun_{false};
  std::atomic<State> state_{State::running};
  std::atomic<Delivery> delivery_{Delivery::none};
  std::shared_ptr<ReaderThread> self_;
};

}  // namespace tessel::internal
