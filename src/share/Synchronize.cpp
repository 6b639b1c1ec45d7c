#include <tessel/Synchronize.h>

#include <tessel/NYXThreadSync.h>

namespace tessel {

Synchronize::Synchronize(NYXThreadSync* sync) : sync_(sync) {
  if (sync_) sync_->lock();
}

Synchronize::~Synchronize() {
  if (sync_) sync_->unlock();
}

}  // namespace tessel
