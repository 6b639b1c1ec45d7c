#include "internal/pc/ProcessStream.h"

#include <algorithm>

#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/ProcessStreamReaderImpl.h>
#include <tessel/Synchronize.h>

namespace tessel::internal {
namespace {

constexpr unsigned long kLook = 10;    // milliseconds
constexpr int kLooksForACancel = 200;  // a read that so many do not end is given up

}  // namespace

NYXThreadSync* processState() {
  static NYXThreadSync* const sync = new NYXThreadSyncImpl;
  return sync;
}

struct ProcessStream::Reader {
  Reader(HANDLE handle, ProcessStreamReaderListener& listener) : work(handle, listener), thread(&work) {}

  // Both return whether the thread has ended; not knowing counts as no.
  bool hasEnded() noexcept { return endsWithin(0); }
  bool endsWithin(unsigned long milliseconds) noexcept {
    try {
      return thread.joinFor(milliseconds);
    } catch (const NYXException&) {
      failed = true;
      return false;
    }
  }

  // After the work was asked to end. Waits for the listener as long as it takes, but not for a read.
  void join() noexcept {
    if (work.isRunningHere()) return;
    for (int looks = 0; looks < kLooksForACancel && !failed;) {
      looks = work.cancelRead(thread) ? looks + 1 : 0;
      if (endsWithin(kLook)) return;
    }
  }

  // The object refers to itself from now on.
  void leaveBehind(const std::shared_ptr<Reader>& self) noexcept { self_ = self; }

  ProcessStreamReaderImpl work;
  NYXThreadImpl thread;
  std::atomic<bool> failed{false};  // the system does not tell whether the thread has ended

 private:
  std::shared_ptr<Reader> self_;
};

// A reader that has not ended needs its objects and the handle: they are left behind.
ProcessStream::~ProcessStream() {
  pipe_.writeEnd.reset();
  stopReaders();
  forgetEnded();
  if (readers_.empty()) return;
  for (const auto& reader : readers_) reader->leaveBehind(reader);
  pipe_.readEnd.release();
}

bool ProcessStream::hasReader() const {
  const Synchronize guard(processState());
  return !readers_.empty();
}

void ProcessStream::replaceReader(ProcessStreamReaderListener& listener) {
  stopReaders();
  forgetEnded();
  auto reader = std::make_shared<Reader>(pipe_.readEnd.get(), listener);
  reader->thread.start();
  const Synchronize guard(processState());
  readers_.push_back(std::move(reader));
}

// A listener may register another one meanwhile.
void ProcessStream::join(const std::atomic<bool>& childStopped) noexcept {
  Readers waitedFor;
  for (Readers current = snapshot(); current != waitedFor; current = snapshot()) {
    for (const auto& reader : current) {
      while (!reader->work.isRunningHere() && !reader->failed && !reader->endsWithin(kLook)) {
        if (!childStopped) continue;
        reader->work.drain();
        reader->join();
        break;
      }
    }
    waitedFor = std::move(current);
  }
}

ProcessStream::Readers ProcessStream::snapshot() const {
  const Synchronize guard(processState());
  return readers_;
}

void ProcessStream::stopReaders() noexcept {
  const Readers current = snapshot();
  for (const auto& reader : current) reader->work.stop();
  for (const auto& reader : current) reader->join();
}

void ProcessStream::forgetEnded() {
  const Synchronize guard(processState());
  std::erase_if(readers_, [](const auto& reader) { return reader->hasEnded(); });
}

}  // namespace tessel::internal
