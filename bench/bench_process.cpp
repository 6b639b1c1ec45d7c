// Launching a child and reading both its streams against the bare system calls, and much output against a bare loop of
// reads. The program is its own child.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXProcessImpl.h>
#include <tessel/ProcessStreamReaderListener.h>

#include "BenchTimer.h"
#include "internal/pc/UniqueHandle.h"

// Needs what the others bring.
#include <psapi.h>

namespace {

using tessel::internal::UniqueHandle;

constexpr std::size_t kMuch = 100 * 1024 * 1024;
constexpr const char* kBrief = "--brief";
constexpr const char* kWriteMuch = "--write-much";

std::string thisProgram() {
  std::string path(MAX_PATH, '\0');
  path.resize(GetModuleFileNameA(nullptr, path.data(), MAX_PATH));
  return path;
}

void write(DWORD stream, const std::string& text, std::size_t times) {
  DWORD written = 0;
  for (std::size_t i = 0; i < times; ++i) {
    WriteFile(GetStdHandle(stream), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  }
}

int runAsChild(const std::string& task) {
  if (task == kBrief) {
    write(STD_OUTPUT_HANDLE, "to output", 1);
    write(STD_ERROR_HANDLE, "to error", 1);
  } else {
    const std::string block(65536, 'x');
    write(STD_OUTPUT_HANDLE, block, kMuch / block.size());
  }
  return 0;
}

class Counter : public tessel::ProcessStreamReaderListener {
 public:
  void processOutput(const std::string& data) override { bytes_ += data.size(); }
  std::size_t bytes() const { return bytes_; }

 private:
  std::size_t bytes_ = 0;
};

void require(bool done, const char* what) {
  if (!done) throw std::runtime_error(std::string(what) + " failed");
}

void run(const char* task, tessel::ProcessStreamReaderListener& output, tessel::ProcessStreamReaderListener& error) {
  std::string program = thisProgram();
  std::string argument = task;
  std::array<char*, 2> arguments{program.data(), argument.data()};
  tessel::NYXProcessImpl process(2, arguments.data());
  process.registerOutputStreamListener(output);
  process.registerErrorStreamListener(error);
  process.start();
  require(process.waitForProcess() == 0, "the child");
}

std::size_t ours(const char* task) {
  Counter output;
  Counter error;
  run(task, output, error);
  return output.bytes() + error.bytes();
}

struct Pipe {
  Pipe() {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    require(CreatePipe(readEnd.receive(), writeEnd.receive(), &inheritable, 0) != 0, "CreatePipe");
  }
  UniqueHandle readEnd;
  UniqueHandle writeEnd;
};

struct Reading {
  HANDLE pipe;
  std::size_t bytes = 0;
};

DWORD WINAPI readToEnd(void* argument) {
  Reading& reading = *static_cast<Reading*>(argument);
  std::vector<char> buffer(65536);
  DWORD length = 0;
  while (ReadFile(reading.pipe, buffer.data(), 65535, &length, nullptr) && length > 0) reading.bytes += length;
  return 0;
}

std::size_t peer(const char* task) {
  Pipe input;
  Pipe output;
  Pipe error;
  for (const HANDLE end : {input.writeEnd.get(), output.readEnd.get(), error.readEnd.get()}) {
    SetHandleInformation(end, HANDLE_FLAG_INHERIT, 0);
  }
  const std::string program = thisProgram();
  std::string line = '"' + program + "\" \"" + task + '"';
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = input.readEnd.get();
  startup.hStdOutput = output.writeEnd.get();
  startup.hStdError = error.writeEnd.get();
  PROCESS_INFORMATION information{};
  Reading outputReading{output.readEnd.get()};
  Reading errorReading{error.readEnd.get()};
  const UniqueHandle outputThread(CreateThread(nullptr, 0, readToEnd, &outputReading, 0, nullptr));
  const UniqueHandle errorThread(CreateThread(nullptr, 0, readToEnd, &errorReading, 0, nullptr));
  require(CreateProcessA(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                         &information) != 0,
          "CreateProcess");
  const UniqueHandle process(information.hProcess);
  const UniqueHandle thread(information.hThread);
  output.writeEnd.reset();
  error.writeEnd.reset();
  for (const HANDLE end : {process.get(), outputThread.get(), errorThread.get()}) WaitForSingleObject(end, INFINITE);
  DWORD code = 1;
  GetExitCodeProcess(process.get(), &code);
  require(code == 0, "the child");
  return outputReading.bytes + errorReading.bytes;
}

// The system fails a launch now and then.
std::size_t launched(std::size_t (*launch)(const char*), const char* task) {
  constexpr int kTries = 3;
  for (int i = 1;; ++i) {
    try {
      return launch(task);
    } catch (const tessel::NYXException&) {
      if (i == kTries) throw;
    } catch (const std::exception&) {
      if (i == kTries) throw;
    }
  }
}

double bytesPerSecond(std::size_t (*launch)(const char*)) {
  const double start = bench::now();
  require(launched(launch, kWriteMuch) == kMuch, "reading everything");
  return static_cast<double>(kMuch) / ((bench::now() - start) / 1e9);
}

double timeOfLaunches(std::size_t (*launch)(const char*)) {
  constexpr int kLaunches = 20;
  const double start = bench::now();
  for (int i = 0; i < kLaunches; ++i) require(launched(launch, kBrief) == 17, "reading everything");
  return (bench::now() - start) / kLaunches;
}

double committedMegabytes() {
  PROCESS_MEMORY_COUNTERS counters{};
  require(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) != 0, "GetProcessMemoryInfo");
  return static_cast<double>(counters.PagefileUsage) / (1024 * 1024);
}

// Looks at the memory of this process at every chunk, against that of the first one.
class Watcher : public tessel::ProcessStreamReaderListener {
 public:
  void processOutput(const std::string& data) override {
    const double inUse = committedMegabytes();
    if (bytes_ == 0) first_ = inUse;
    most_ = std::max(most_, inUse);
    bytes_ += data.size();
  }
  std::size_t bytes() const { return bytes_; }
  double growth() const { return most_ - first_; }

 private:
  std::size_t bytes_ = 0;
  double first_ = 0;
  double most_ = 0;
};

// What 100 MB of output take while they flow.
double megabytesWhileFlowing() {
  Watcher output;
  Counter error;
  run(kWriteMuch, output, error);
  require(output.bytes() == kMuch, "reading everything");
  return output.growth();
}

void measure() {
  bench::printTimes("child process: launch, both streams to listeners, wait",
                    bench::medians([] { return timeOfLaunches(ours); }, [] { return timeOfLaunches(peer); }),
                    "bare system calls", 1.1);
  bytesPerSecond(ours);
  const double before = committedMegabytes();
  const bench::Pair rates = bench::medians([] { return bytesPerSecond(ours); }, [] { return bytesPerSecond(peer); });
  const double growth = committedMegabytes() - before;
  const auto megabytes = [](double rate) { return bench::number(rate / (1024 * 1024)) + " MB/s"; };
  bench::printRow("child process: 100 MB of output to a listener", megabytes(rates.ours),
                  megabytes(rates.peer) + ", bare loop of ReadFile", bench::number(rates.ratio()), "at least 0.80",
                  rates.ratio() >= 0.8);
  bench::printRow("child process: memory that five times 100 MB leave", bench::number(growth) + " MB", "", "",
                  "at most 1 MB", growth <= 1);
  const double flowing = megabytesWhileFlowing();
  bench::printRow("child process: memory that 100 MB take while they flow", bench::number(flowing) + " MB", "", "",
                  "at most 1 MB", flowing <= 1);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2) return runAsChild(argv[1]);
  try {
    measure();
    return 0;
  } catch (const tessel::NYXException& exception) {
    std::fprintf(stderr, "bench_process: %s\n", exception.getMessage().c_str());
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "bench_process: %s\n", exception.what());
  }
  return 1;
}
