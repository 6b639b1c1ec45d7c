// Loading the library in a fresh process, against an empty DLL of the same linking. Each load is a process of its own:
// this program again, whose exit code is the time.
//
// usage: bench_load
//        bench_load DLL        exit code: nanoseconds
#include <filesystem>
#include <stdexcept>
#include <string>

#include "BenchTimer.h"
#include "internal/pc/UniqueHandle.h"

using tessel::internal::UniqueHandle;

namespace {

constexpr int kLoadsPerRound = 15;
constexpr DWORD kLongest = 1'000'000'000;  // a code above is that of a crash

int load(const char* dll) {
  const double start = bench::now();
  const HMODULE module = LoadLibraryA(dll);
  const double time = bench::now() - start;
  return module ? static_cast<int>(time) : -1;
}

double timeInProcess(const std::filesystem::path& program, const char* dll) {
  std::string command = '"' + program.string() + "\" \"" + (program.parent_path() / dll).string() + '"';
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION information{};
  if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &information)) {
    throw std::runtime_error("CreateProcess failed: " + std::to_string(GetLastError()));
  }
  const UniqueHandle process(information.hProcess);
  const UniqueHandle thread(information.hThread);
  DWORD code = 0;
  if (WaitForSingleObject(process.get(), INFINITE) != WAIT_OBJECT_0 || !GetExitCodeProcess(process.get(), &code) ||
      code == 0 || code > kLongest) {
    throw std::runtime_error(std::string(dll) + " cannot be loaded");
  }
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2) return load(argv[1]);
  try {
    const std::filesystem::path program = argv[0];
    std::vector<double> ours;
    std::vector<double> peers;
    // Without turns of single loads a short disturbance would hit one side only.
    for (int i = 0; i < bench::kRounds * kLoadsPerRound; ++i) {
      ours.push_back(timeInProcess(program, "tesselnative.dll"));
      peers.push_back(timeInProcess(program, "bench_empty.dll"));
    }
    const bench::Pair times{bench::median(std::move(ours)), bench::median(std::move(peers))};
    const double added = times.ours - times.peer;
    bench::printRow("load of the library in a fresh process", bench::duration(times.ours),
                    bench::duration(times.peer) + ", an empty DLL of the same linking", bench::difference(added),
                    "at most +1.5 ms", added <= 1.5e6);
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "bench_load: %s\n", exception.what());
    return 1;
  }
}
