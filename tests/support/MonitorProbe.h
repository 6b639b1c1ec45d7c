// What a monitor looks like from outside.
#pragma once

#include <tessel/NYXThreadSyncImpl.h>

#include "support/Work.h"

namespace tessel::test {

// Whether another thread could take it.
inline bool isFree(NYXThreadSyncImpl& monitor) {
  return onOtherThread([&monitor] {
    if (!monitor.tryLock()) return false;
    monitor.unlock();
    return true;
  });
}

// Gives up the caller's holds; the result is how many there were.
inline int releaseAll(NYXThreadSyncImpl& monitor) {
  int holds = 0;
  for (; !isFree(monitor); ++holds) monitor.unlock();
  return holds;
}

}  // namespace tessel::test
