#include "internal/pc/PipeInheritance.h"

#include <tessel/NYXThreadSyncImpl.h>

namespace tessel::internal {
namespace {

NYXThreadSync* lock() {
  static NYXThreadSync* const sync = new NYXThreadSyncImpl;
  return sync;
}

}  // namespace

InheritanceLock::InheritanceLock() : guard_(lock()) {}

}  // namespace tessel::internal
