#include <tessel/Synchronize.h>

#include <utility>

#include <tessel/NYXThreadSync.h>

namespace tessel {

Synchronize::Synchronize(NYXThreadSync* sync) : sync_(sync) {
  if (sync_) sync_->lock();
}

Synchronize::Synchronize(const Synchronize& other) : Synchronize(other.sync_) {}

// By way of a copy, whose end unlocks what this guard held: also for an assignment to itself.
Synchronize& Synchronize::operator=(const Synchronize& other) {
  Synchronize copy(other);
  std::swap(sync_, copy.sync_);
  return *this;
}

Synchronize::~Synchronize() {
  if (sync_) sync_->unlock();
}

}  // namespace tessel
