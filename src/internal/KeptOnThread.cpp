#include "internal/KeptOnThread.h"

#include <utility>

#include "internal/ThreadState.h"

namespace tessel::internal {

KeptOnThread::KeptOnThread() noexcept : innermost_(threadState().kept), outer_(innermost_) { innermost_ = this; }

KeptOnThread::~KeptOnThread() {
  release();
  innermost_ = outer_;
}

bool KeptOnThread::keep(GiveBack way, void* object) noexcept {
  KeptOnThread* const kept = threadState().kept;
  if (!kept || kept->any()) return false;
  kept->giveBack_ = way;
  kept->object_ = object;
  return true;
}

void KeptOnThread::release() noexcept {
  if (const GiveBack way = std::exchange(giveBack_, nullptr)) way(object_);
}

}  // namespace tessel::internal
