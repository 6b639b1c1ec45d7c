// A line through the rotating file against WriteFile of ready-made lines of the same length.
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/SecureFileHandler.h>

#include "BenchTimer.h"
#include "TempFile.h"
#include "internal/pc/UniqueHandle.h"

namespace {

constexpr int kLimit = 100000000;  // some rotations in a run
constexpr int kCount = 2;
constexpr int kThreads = 4;
constexpr int kLinesOfAThread = 20000;

// As long as a trace record usually is, with the backslashes that paths bring.
const std::string kText =
    "12:34:56.000.00  0000000000000124 @0000000001a2b3c0 IPCClientImpl  Entry: connect [C:\\ProgramData\\agent] [1]";

class Lines {
 public:
  Lines()
      : file_("lines.log"),
        handle_(CreateFileA(file_.path().c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr)) {
    if (!handle_) throw std::runtime_error("cannot open " + file_.path());
  }

  void write() {
    DWORD written = 0;
    if (!WriteFile(handle_.get(), line_.data(), static_cast<DWORD>(line_.size()), &written, nullptr)) {
      throw std::runtime_error("cannot write " + file_.path());
    }
  }

 private:
  const bench::TempFile file_;
  const tessel::internal::UniqueHandle handle_;
  const std::string line_ = kText + "\r\n";
};

// Nanoseconds of a line while several threads write.
double timeFromThreads(tessel::SecureFileHandler& handler) {
  std::vector<std::thread> threads;
  const double start = bench::now();
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&handler] {
      for (int n = 0; n < kLinesOfAThread; ++n) handler.publish(kText);
    });
  }
  for (std::thread& thread : threads) thread.join();
  return (bench::now() - start) / (kThreads * kLinesOfAThread);
}

double timeFromOne(tessel::SecureFileHandler& handler) {
  const auto publish = [&] { handler.publish(kText); };
  return bench::timeOf(publish, kThreads * kLinesOfAThread);
}

}  // namespace

int main() {
  try {
    const bench::TempFile file("output%g.log");
    tessel::SecureFileHandler handler(file.path(), kLimit, kCount, false, false, 0);
    Lines lines;
    bench::printTimes("rotating file: a line, one thread",
                      bench::compareCalls([&] { handler.publish(kText); }, [&] { lines.write(); }),
                      "WriteFile of ready-made lines", 1.6);
    bench::printTimes("rotating file: a line, four threads",
                      bench::medians([&] { return timeFromThreads(handler); }, [&] { return timeFromOne(handler); }),
                      "the same from one thread", 1.5);
    return 0;
  } catch (const tessel::NYXException& exception) {
    std::fprintf(stderr, "bench_output: %s\n", exception.getMessage().c_str());
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "bench_output: %s\n", exception.what());
  }
  return 1;
}
