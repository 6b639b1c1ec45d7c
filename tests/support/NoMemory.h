// A moment from which on the library gets no memory.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdlib>

#include "support/ImportHook.h"

namespace tessel::test {

// Only the thread that made the object is refused, and only from refuse() on.
class NoMemory {
 public:
  NoMemory() {
    hook_.replaceWith([this, thread = GetCurrentThreadId()](std::size_t size) -> void* {
      return refusing_ && GetCurrentThreadId() == thread ? nullptr : hook_.callOriginal(size);
    });
  }

  void refuse() { refusing_ = true; }

 private:
  std::atomic<bool> refusing_{false};
  ImportHook<"malloc", void*(std::size_t)> hook_;
};

}  // namespace tessel::test
