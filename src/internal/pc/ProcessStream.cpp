#include "internal/pc/ProcessStream.h"

#include <algorithm>

#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/Synchronize.h>

namespace tessel::internal {
namespace {

constexpr unsigned long kLook = 10;  // milliseconds

}  // namespace

NYXThreadSync* processState() {
  static NYXThreadSync* const sync = new NYXThreadSyncImpl;
  return sync;
}

ProcessStream::~ProcessStream() {
  for (const auto& reader : readers_) {
    if (reader->hasEnded()) continue;
    reader->leaveBehind(reader);
    pipe_.readEnd.release();
  }
}

bool ProcessStream::hasReader() const {
  const Synchronize guard(processState());
  return !readers_.empty();
}

bool ProcessStream::isReadHere() const {
  const Synchronize guard(processState());
  return std::any_of(readers_.begin(), readers_.end(), [](const auto& reader) { return reader->isRunningHere(); });
}

// The thread is let go only when everybody can find it, and nothing can fail once it is there.
void ProcessStream::replaceReader(ProcessStreamReaderListener& listener) {
  endReaders();
  forgetEnded();
  Readers fresh{std::make_shared<ReaderThread>(pipe_.readEnd.get(), listener, captured_)};
  ReaderThread& reader = *fresh.front();
  reader.start();
  {
    const Synchronize guard(processState());
    readers_.splice(readers_.end(), fresh);
  }
  reader.letGo();
}

void ProcessStream::endReaders() noexcept {
  {
    const Synchronize guard(processState());
    for (const auto& reader : readers_) reader->stop();
  }
  while (const auto reader = readerToEnd()) reader->end();
}

void ProcessStream::join(const std::atomic<bool>& childStopped) noexcept {
  while (const auto reader = readerToEnd()) {
    while (!childStopped && !reader->isOverWithin(kLook)) continue;
    if (childStopped) reader->drainAndEnd();
  }
}

std::shared_ptr<ReaderThread> ProcessStream::readerToEnd() const noexcept {
  const Synchronize guard(processState());
  const auto found = std::find_if(readers_.begin(), readers_.end(),
                                  [](const auto& reader) { return !reader->isOver() && !reader->isRunningHere(); });
  return found == readers_.end() ? nullptr : *found;
}

void ProcessStream::forgetEnded() noexcept {
  Readers ended;
  const Synchronize guard(processState());
  for (auto next = readers_.begin(); next != readers_.end();) {
    const auto reader = next++;
    if ((*reader)->isKnownToHaveEnded()) ended.splice(ended.end(), readers_, reader);
  }
}

}  // namespace tessel::internal
