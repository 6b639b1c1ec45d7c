#include "internal/pc/ReaderThread.h"

#include <utility>

#include <tessel/NYXException.h>

namespace tessel::internal {
namespace {

constexpr unsigned long kLook = 10;    // milliseconds
constexpr int kLooksForACancel = 200;  // a read that so many do not end is given up

}  // namespace

ReaderThread::ReaderThread(HANDLE handle, ProcessStreamReaderListener& listener, Captured captured)
    : listener_(listener), captured_(std::move(captured)), work_(handle, *this), thread_(this) {}

ReaderThread::~ReaderThread() = default;

long ReaderThread::run() {
  while (!mayRun_) SwitchToThread();
  return work_.run();
}

void ReaderThread::processOutput(const std::string& data) {
  Delivery expected = Delivery::none;
  if (!delivery_.compare_exchange_strong(expected, Delivery::underWay)) return;
  try {
    listener_.processOutput(data);
  } catch (...) {
    delivery_ = Delivery::none;
    if (captured_->exchange(true)) return;
    throw;
  }
  delivery_ = Delivery::none;
}

bool ReaderThread::endsWithin(unsigned long milliseconds) {
  if (state_ == State::ended) return true;
  if (!thread_.joinFor(milliseconds)) return false;
  state_ = State::ended;
  return true;
}

bool ReaderThread::hasEnded() noexcept {
  try {
    return endsWithin(0);
  } catch (const NYXException&) {
    return false;
  }
}

// Without the system's word the thread may run for ever, for all that is known.
bool ReaderThread::isOverWithin(unsigned long milliseconds) noexcept {
  if (isOver()) return true;
  try {
    return endsWithin(milliseconds);
  } catch (const NYXException&) {
    giveUp();
    return true;
  }
}

void ReaderThread::end() noexcept {
  work_.stop();
  cancel();
}

void ReaderThread::drainAndEnd() noexcept {
  work_.drain();
  cancel();
}

void ReaderThread::cancel() noexcept {
  for (int looks = 0; looks < kLooksForACancel;) {
    looks = work_.cancelRead(thread_) ? looks + 1 : 0;
    if (isOverWithin(kLook)) return;
  }
  giveUp();
}

// A call that is under way is waited for: the listener may be gone as soon as this returns.
void ReaderThread::giveUp() noexcept {
  work_.stop();
  Delivery expected = Delivery::none;
  while (!delivery_.compare_exchange_weak(expected, Delivery::forbidden) && expected != Delivery::forbidden) {
    expected = Delivery::none;
    Sleep(1);
  }
  State running = State::running;
  state_.compare_exchange_strong(running, State::givenUp);
}

}  // namespace tessel::internal
