// The monitor on a recursive mutex and a condition variable, which the thread sanitizer understands: it sees data
// that the monitor does not guard and locks that are taken in two orders.
//
// Other than on Windows a stranger's unlock does nothing, since a mutex can only be left by its owner.
#include <tessel/NYXThreadSyncImpl.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include <tessel/FFDC.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThread.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"

namespace tessel {

const RasDescriptor NYXThreadSyncImpl::rd("NYXThreadSyncImpl", internal::kMessages);

struct NYXThreadSyncImpl::State {
  std::recursive_timed_mutex section;
  std::atomic<unsigned long> owner{0};
  std::uint32_t count = 0;  // guarded by section

  std::mutex waiters;
  std::condition_variable notified;
  std::uint64_t notifications = 0;  // guarded by waiters

  void addHold() {
    owner = NYXThread::getCurrentThreadId();
    ++count;
  }

  void dropHold() {
    if (--count == 0) owner = 0;
    section.unlock();
  }

  // The caller gives up its holds only after it is among those who hear the next notification.
  bool waitWithout(std::uint32_t held, long timeoutMillis) {
    std::unique_lock guard(waiters);
    for (std::uint32_t i = 0; i < held; ++i) dropHold();
    const auto isNotified = [this, seen = notifications] { return notifications != seen; };
    if (timeoutMillis >= 0) return notified.wait_for(guard, std::chrono::milliseconds(timeoutMillis), isNotified);
    notified.wait(guard, isNotified);
    return true;
  }
};

NYXThreadSyncImpl::NYXThreadSyncImpl() : state_(new State) {}

NYXThreadSyncImpl::NYXThreadSyncImpl(const NYXThreadSyncImpl&) : NYXThreadSyncImpl() {}

NYXThreadSyncImpl& NYXThreadSyncImpl::operator=(const NYXThreadSyncImpl&) { return *this; }

NYXThreadSyncImpl::~NYXThreadSyncImpl() { delete state_; }

void NYXThreadSyncImpl::lock() {
  state_->section.lock();
  state_->addHold();
}

bool NYXThreadSyncImpl::tryLock() {
  if (!state_->section.try_lock()) return false;
  state_->addHold();
  return true;
}

// By the system's clock: the thread sanitizer does not know the wait by the steady one.
bool NYXThreadSyncImpl::tryLock(long timeoutMillis) {
  const auto end = std::chrono::system_clock::now() + std::chrono::milliseconds(timeoutMillis);
  if (!state_->section.try_lock_until(end)) return false;
  state_->addHold();
  return true;
}

void NYXThreadSyncImpl::unlock() {
  if (state_->owner == NYXThread::getCurrentThreadId()) state_->dropHold();
}

int NYXThreadSyncImpl::wait(long timeoutMillis) {
  if (state_->owner != NYXThread::getCurrentThreadId()) {
    const NYXException failure(NLS::format(rd, "KTBNV0171_THREAD_NOT_OWNER"));
    FFDC::capture(rd, "wait", FFDC::PROBE_001(), &failure);
    if (rd.isFlowOn()) Trace::throwing(rd, this, "wait", &failure);
    throw failure;
  }
  const std::uint32_t held = state_->count;
  const bool woken = state_->waitWithout(held, timeoutMillis);
  for (std::uint32_t i = 0; i < held; ++i) lock();
  return woken ? 0 : -1;
}

void NYXThreadSyncImpl::wait() { wait(-1); }

void NYXThreadSyncImpl::notifyAll() {
  const std::lock_guard guard(state_->waiters);
  ++state_->notifications;
  state_->notified.notify_all();
}

}  // namespace tessel
