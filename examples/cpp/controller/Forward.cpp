#include "Forward.h"

#include <windows.h>

#include <array>
#include <thread>
#include <utility>

namespace controller {
namespace {

// A pipe also answers a write of no bytes with none: it has ended only if it says so.
bool readSome(HANDLE stream, std::array<char, 65536>& block, DWORD& length) {
  if (!ReadFile(stream, block.data(), static_cast<DWORD>(block.size()), &length, nullptr)) return false;
  return length > 0 || PeekNamedPipe(stream, nullptr, 0, nullptr, nullptr, nullptr);
}

bool write(HANDLE stream, const char* data, DWORD size) {
  while (size > 0) {
    DWORD written = 0;
    if (!WriteFile(stream, data, size, &written, nullptr)) return false;
    data += written;
    size -= written;
  }
  return true;
}

// Goes on reading where nothing can be written: a program whose pipe is full would stand still.
void forward(HANDLE from, HANDLE to) {
  std::array<char, 65536> block{};
  bool writable = true;
  for (DWORD length = 0; readSome(from, block, length);) writable = writable && write(to, block.data(), length);
}

}  // namespace

void Forward::start(const std::shared_ptr<tessel::NYXProcess>& process) {
  startOne(process, process->getOutputStream(), STD_OUTPUT_HANDLE);
  startOne(process, process->getErrorStream(), STD_ERROR_HANDLE);
}

void Forward::startOne(const std::shared_ptr<tessel::NYXProcess>& process, void* from, unsigned long to) {
  auto work = [this, held = process, from, to]() mutable {
    forward(from, GetStdHandle(to));
    held.reset();
    const std::lock_guard guard(mutex_);
    --streams_;
    changed_.notify_all();
  };
  const std::lock_guard guard(mutex_);
  std::thread(std::move(work)).detach();
  ++streams_;
}

void Forward::waitForEnd(std::chrono::seconds limit) {
  std::unique_lock guard(mutex_);
  changed_.wait_for(guard, limit, [this] { return streams_ == 0; });
}

}  // namespace controller
