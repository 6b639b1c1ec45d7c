// Taking and releasing a file lock against opening and closing the same file exclusively.
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include <tessel/FileLock.h>
#include <tessel/NYXException.h>

#include "BenchTimer.h"
#include "TempFile.h"
#include "internal/pc/UniqueHandle.h"

int main() {
  try {
    const bench::TempFile file("bench.lck");
    const auto ours = [&] {
      std::unique_ptr<tessel::FileLock>(tessel::FileLock::newInstance(file.path(), false, false));
    };
    const auto peer = [&] {
      const tessel::internal::UniqueHandle lock(
          CreateFileA(file.path().c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
      if (!lock) throw std::runtime_error("cannot open " + file.path());
    };
    bench::printTimes("file lock: take and release", bench::compareCalls(ours, peer), "exclusive CreateFile and close",
                      1.15);
    return 0;
  } catch (const tessel::NYXException& exception) {
    std::fprintf(stderr, "bench_lock: %s\n", exception.getMessage().c_str());
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "bench_lock: %s\n", exception.what());
  }
  return 1;
}
