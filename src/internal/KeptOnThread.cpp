#include "internal/KeptOnThread.h"

#include <utility>

namespace tessel::internal {
namespace {

thread_local KeptOnThread* current = nullptr;

}  // namespace

KeptOnThread::KeptOnThread() noexcept : outer_(current) { current = this; }

KeptOnThread::~KeptOnThread() {
  release();
  current = outer_;
}

bool KeptOnThread::keep(GiveBack way, void* object) noexcept {
  KeptOnThread* const kept = current;
  if (!kept || kept->any()) return false;
  kept->giveBack_ = way;
  kept->object_ = object;
  return true;
}

void KeptOnThread::release() noexcept {
  if (const GiveBack way = std::exchange(giveBack_, nullptr)) way(object_);
}

}  // namespace tessel::internal
