#include "internal/KeptOnThread.h"

#include <utility>

#include "internal/ThreadState.h"

namespace tessel::internal {

KeptOnThread::KeptOnThread() noexcept : outer_(threadState().kept) { threadState().kept = this; }

KeptOnThread::~KeptOnThread() {
  release();
  threadState().kept = outer_;
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
