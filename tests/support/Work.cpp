#include "support/Work.h"

#include <windows.h>

#include <exception>
#include <stdexcept>

namespace tessel::test {
namespace {

struct Errand {
  const std::function<void()>& call;
  std::exception_ptr failure;
};

DWORD WINAPI runErrand(void* argument) {
  Errand& errand = *static_cast<Errand*>(argument);
  try {
    errand.call();
  } catch (...) {
    errand.failure = std::current_exception();
  }
  return 0;
}

}  // namespace

void runOnOtherThread(const std::function<void()>& call) {
  Errand errand{call, nullptr};
  const HANDLE thread = CreateThread(nullptr, 0, runErrand, &errand, 0, nullptr);
  if (!thread) throw std::runtime_error("CreateThread failed");
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  if (errand.failure) std::rethrow_exception(errand.failure);
}

}  // namespace tessel::test
