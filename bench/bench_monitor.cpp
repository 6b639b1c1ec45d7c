// The monitor against a critical section with two manual-reset events.
#include <thread>

#include <tessel/tessel.h>

#include "BenchTimer.h"
#include "internal/pc/UniqueHandle.h"

namespace {

constexpr int kRoundTrips = 10000;

class Section {
 public:
  Section() { InitializeCriticalSection(&section_); }
  ~Section() { DeleteCriticalSection(&section_); }
  Section(const Section&) = delete;
  Section& operator=(const Section&) = delete;
  void lock() { EnterCriticalSection(&section_); }
  void unlock() { LeaveCriticalSection(&section_); }

 private:
  CRITICAL_SECTION section_;
};

// Whose turn it is, passed from one player to the other and back.
class MonitorTable {
 public:
  void play(int player) {
    const tessel::Synchronize guard(&monitor_);
    for (int i = 0; i < kRoundTrips; ++i) {
      while (turn_ != player) monitor_.wait();
      turn_ = 1 - player;
      monitor_.notifyAll();
    }
  }

 private:
  tessel::NYXThreadSyncImpl monitor_;
  int turn_ = 0;
};

class SectionTable {
 public:
  void play(int player) {
    section_.lock();
    for (int i = 0; i < kRoundTrips; ++i) {
      while (turn_ != player) {
        ResetEvent(events_[player].get());
        section_.unlock();
        WaitForSingleObject(events_[player].get(), INFINITE);
        section_.lock();
      }
      turn_ = 1 - player;
      SetEvent(events_[1 - player].get());
    }
    section_.unlock();
  }

 private:
  static tessel::internal::UniqueHandle newEvent() {
    return tessel::internal::UniqueHandle(CreateEventA(nullptr, TRUE, FALSE, nullptr));
  }

  Section section_;
  tessel::internal::UniqueHandle events_[2] = {newEvent(), newEvent()};
  int turn_ = 0;
};

// Nanoseconds of one round trip.
template <class Table>
double roundTrip() {
  Table table;
  const double start = bench::now();
  std::thread other([&] { table.play(1); });
  table.play(0);
  other.join();
  return (bench::now() - start) / kRoundTrips;
}

}  // namespace

int main() {
  bench::printTimes("monitor: wait and notifyAll, round trip between two threads",
                    bench::medians(roundTrip<MonitorTable>, roundTrip<SectionTable>), "critical section and two events",
                    1.25);
  tessel::NYXThreadSyncImpl monitor;
  Section section;
  const auto ours = [&] {
    monitor.lock();
    monitor.unlock();
  };
  const auto peer = [&] {
    section.lock();
    section.unlock();
  };
  bench::printTimes("monitor: lock and unlock", bench::compareCalls(ours, peer), "critical section", 2);
  return 0;
}
