#include <tessel/NYXThreadSyncImpl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>

#include <tessel/FFDC.h>
#include <tessel/NYXException.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/pc/Platform.h"
#include "internal/pc/ThreadId.h"

namespace tessel {

using internal::LastError;

const RasDescriptor NYXThreadSyncImpl::rd("NYXThreadSyncImpl", internal::kMessages);

namespace {

// The holder and its count of nested locks, read by strangers, cleared with one write.
class Owner {
 public:
  std::uint32_t thread() const { return static_cast<std::uint32_t>(value_.load(std::memory_order_relaxed)); }
  std::uint32_t count() const { return static_cast<std::uint32_t>(value_.load(std::memory_order_relaxed) >> 32); }
  void set(std::uint32_t thread, std::uint32_t count) {
    value_.store(count == 0 ? 0 : std::uint64_t{count} << 32 | thread, std::memory_order_relaxed);
  }

 private:
  std::atomic<std::uint64_t> value_{0};
};

// Who waits for the section. The section goes to whoever asks first when it becomes free, and that can be, again and
// again, the thread that has just left it, before the one that was woken gets a processor.
class Queue {
 public:
  // A place in the queue for as long as the object lives, while there are some left.
  class Place {
   public:
    explicit Place(Queue& queue) : queue_(queue), place_(queue.take()) {}
    ~Place() { queue_.giveBack(place_); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

   private:
    Queue& queue_;
    std::atomic<ULONGLONG>* const place_;
  };

  bool empty() const { return waiters_.load(std::memory_order_relaxed) == 0; }

  // Keeps this thread away for a moment when another one has been waiting for long.
  void letOthersIn() const {
    if (anyoneWaitsForLong()) Sleep(1);
  }

 private:
  std::atomic<ULONGLONG>* take() {
    waiters_.fetch_add(1, std::memory_order_relaxed);
    const ULONGLONG now = GetTickCount64();
    for (std::atomic<ULONGLONG>& place : since_) {
      ULONGLONG nobody = 0;
      if (place.compare_exchange_strong(nobody, now, std::memory_order_relaxed)) return &place;
    }
    return nullptr;
  }

  void giveBack(std::atomic<ULONGLONG>* place) {
    if (place) place->store(0, std::memory_order_relaxed);
    waiters_.fetch_sub(1, std::memory_order_relaxed);
  }

  bool anyoneWaitsForLong() const {
    // Milliseconds; several steps of the system's counter. A thread that was terminated as it waited leaves its place.
    constexpr ULONGLONG kLong = 50;
    constexpr ULONGLONG kGone = 600'000;
    const ULONGLONG now = GetTickCount64();
    return std::any_of(since_.begin(), since_.end(), [now](const std::atomic<ULONGLONG>& place) {
      const ULONGLONG since = place.load(std::memory_order_relaxed);
      return since != 0 && now >= since + kLong && now < since + kGone;
    });
  }

  std::atomic<std::uint32_t> waiters_{0};
  // Since when, in milliseconds of the system's counter; 0 is a free place. Who finds none waits all the same, and
  // is let in together with those who have one.
  std::array<std::atomic<ULONGLONG>, 8> since_{};
};

class WaitersLock {
 public:
  explicit WaitersLock(CRITICAL_SECTION& section) : section_(section) { EnterCriticalSection(&section_); }
  ~WaitersLock() { LeaveCriticalSection(&section_); }
  WaitersLock(const WaitersLock&) = delete;
  WaitersLock& operator=(const WaitersLock&) = delete;

 private:
  CRITICAL_SECTION& section_;
};

}  // namespace

struct NYXThreadSyncImpl::State {
  // The moment a wait began.
  struct Moment {
    std::uint64_t notifications = 0;
    bool eventSet = false;  // left set for waiters that were notified and have not come back
  };

  HANDLE event = nullptr;
  CRITICAL_SECTION section{};
  Owner owner;
  Queue queue;
  // Entries of the section not left yet. Leaving a section that nobody is inside corrupts it.
  std::atomic<std::uint32_t> entered{0};
  std::atomic<std::uint32_t> timedWaiters{0};
  CONDITION_VARIABLE left = CONDITION_VARIABLE_INIT;  // the section, while anybody waits for it with a limit

  // Who waits, and who of them was notified and has not come back; held only for a few instructions.
  CRITICAL_SECTION waitersSection{};
  std::uint64_t notifications = 0;
  std::uint32_t waiting = 0;
  std::uint32_t returning = 0;

  explicit State(HANDLE newEvent) : event(newEvent) {
    InitializeCriticalSection(&section);
    InitializeCriticalSection(&waitersSection);
  }
  // The event is not closed: see the header.
  ~State() {
    DeleteCriticalSection(&waitersSection);
    DeleteCriticalSection(&section);
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  void enter() {
    letOthersIn();
    if (tryEnter()) return;
    const Queue::Place place(queue);
    EnterCriticalSection(&section);
    entered.store(entered.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  }

  void letOthersIn() const {
    if (!queue.empty() && owner.thread() != internal::currentThreadId()) queue.letOthersIn();
  }

  bool tryEnter() {
    if (!TryEnterCriticalSection(&section)) return false;
    entered.store(entered.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    return true;
  }

  void addHold() {
    const std::uint32_t self = internal::currentThreadId();
    owner.set(self, owner.thread() == self ? owner.count() + 1 : 1);
  }

  void leave() {
    const std::uint32_t entries = entered.load(std::memory_order_relaxed);
    if (entries == 0) return;
    entered.store(entries - 1, std::memory_order_relaxed);
    // Asked before, since afterwards the monitor may be gone, unless somebody waits for it.
    const bool awaited = timedWaiters.load() != 0;
    LeaveCriticalSection(&section);
    if (awaited) WakeConditionVariable(&left);
  }

  // Looks again after a slice of time: who leaves as the wait begins does not see that it does.
  bool enterWithin(ULONGLONG milliseconds) {
    constexpr ULONGLONG kSlice = 10;
    const ULONGLONG begin = GetTickCount64();
    if (milliseconds != 0) letOthersIn();
    if (tryEnter()) return true;
    const Queue::Place place(queue);
    const WaitersLock guard(waitersSection);
    ++timedWaiters;
    bool taken = tryEnter();
    for (ULONGLONG passed = 0; !taken && passed < milliseconds; passed = GetTickCount64() - begin) {
      SleepConditionVariableCS(&left, &waitersSection, static_cast<DWORD>(std::min(kSlice, milliseconds - passed)));
      taken = tryEnter();
    }
    --timedWaiters;
    return taken;
  }

  // While a notified waiter is on its way back the event must stay set, or that waiter would sleep on.
  // Takes the system's error number before the lock is left.
  bool beginWait(Moment& moment, LastError& error) {
    const WaitersLock guard(waitersSection);
    if (returning == 0 && !ResetEvent(event)) {
      error = LastError();
      return false;
    }
    ++waiting;
    moment = {notifications, returning != 0};
    return true;
  }

  void endWait(const Moment& moment) {
    const WaitersLock guard(waitersSection);
    --(moment.notifications == notifications ? waiting : returning);
  }

  // As beginWait.
  bool notify(LastError& error) {
    const WaitersLock guard(waitersSection);
    if (!SetEvent(event)) {
      error = LastError();
      return false;
    }
    ++notifications;
    returning += waiting;
    waiting = 0;
    return true;
  }
};

namespace {

// Failures only: the monitor lies below the trace facility.
NYXException failureOf(const RasDescriptor& rd, const void* object, const char* method, const char* key,
                       const std::string& insert) {
  const NYXException failure(NLS::format(rd, key, insert));
  if (rd.isFlowOn()) Trace::throwing(rd, object, method, &failure);
  return failure;
}

}  // namespace

NYXThreadSyncImpl::NYXThreadSyncImpl() {
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  if (!event) {
    const LastError error;
    throw failureOf(rd, this, "NYXThreadSyncImpl", "KTBNV0008_UNABLE_TO_CREATE_EVENT", error.numberText());
  }
  state_ = new State(event);
}

NYXThreadSyncImpl::NYXThreadSyncImpl(const NYXThreadSyncImpl&) : NYXThreadSyncImpl() {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): each object keeps its own monitor
NYXThreadSyncImpl& NYXThreadSyncImpl::operator=(const NYXThreadSyncImpl&) { return *this; }

NYXThreadSyncImpl::~NYXThreadSyncImpl() { delete state_; }

void NYXThreadSyncImpl::lock() {
  state_->enter();
  state_->addHold();
}

bool NYXThreadSyncImpl::tryLock() {
  if (!state_->tryEnter()) return false;
  state_->addHold();
  return true;
}

bool NYXThreadSyncImpl::tryLock(long timeoutMillis) {
  if (!state_->enterWithin(static_cast<ULONGLONG>(timeoutMillis))) return false;
  state_->addHold();
  return true;
}

void NYXThreadSyncImpl::unlock() {
  const std::uint32_t self = internal::currentThreadId();
  if (state_->owner.thread() == self) state_->owner.set(self, state_->owner.count() - 1);
  state_->leave();
}

int NYXThreadSyncImpl::wait(long timeoutMillis) {
  const std::uint32_t self = internal::currentThreadId();
  if (state_->owner.thread() != self) {
    const NYXException failure(NLS::format(rd, "KTBNV0171_THREAD_NOT_OWNER"));
    FFDC::capture(rd, "wait", FFDC::PROBE_001(), &failure);
    if (rd.isFlowOn()) Trace::throwing(rd, this, "wait", &failure);
    throw failure;
  }
  const std::uint32_t held = state_->owner.count();
  State::Moment moment;
  LastError resetError(NO_ERROR);
  if (!state_->beginWait(moment, resetError)) {
    throw failureOf(rd, this, "wait", "KTBNV0010_UNABLE_TO_RESET_EVENT", resetError.numberText());
  }
  for (std::uint32_t i = 0; i < held; ++i) state_->leave();
  // A wait that would end at once, since the event is still set for others, lets those go first.
  if (moment.eventSet) SwitchToThread();
  const DWORD result = WaitForSingleObject(state_->event, static_cast<DWORD>(timeoutMillis));
  const LastError error;
  state_->endWait(moment);
  if (result == WAIT_FAILED) {
    throw failureOf(rd, this, "wait", "KTBNV0011_WAIT_FOR_EVENT_FAILED", error.numberText());
  }
  if (result != WAIT_OBJECT_0 && result != WAIT_TIMEOUT) {
    throw failureOf(rd, this, "wait", "KTBNV0012_WAIT_FOR_EVENT_FAILED2", std::to_string(result));
  }
  state_->enter();
  state_->owner.set(self, held);
  for (std::uint32_t i = 1; i < held; ++i) state_->enter();
  return result == WAIT_OBJECT_0 ? 0 : -1;
}

void NYXThreadSyncImpl::wait() { wait(-1); }

void NYXThreadSyncImpl::notifyAll() {
  LastError error(NO_ERROR);
  if (!state_->notify(error)) {
    throw failureOf(rd, this, "notifyAll", "KTBNV0009_UNABLE_TO_SET_EVENT", error.numberText());
  }
}

}  // namespace tessel
