#include "Process.h"

#include <stdexcept>

#include <tessel/NYXProcess.h>
#include <tessel/NYXUtils.h>

#include "internal/pc/UniqueHandle.h"

namespace tesselctl {
namespace {

using tessel::internal::UniqueHandle;

BOOL WINAPI passOver(DWORD /*event*/) { return TRUE; }

// Keeps this process alive until the program, which is interrupted as well, has ended.
class InterruptsPassedOver {
 public:
  InterruptsPassedOver() { SetConsoleCtrlHandler(passOver, TRUE); }
  ~InterruptsPassedOver() { SetConsoleCtrlHandler(passOver, FALSE); }
  InterruptsPassedOver(const InterruptsPassedOver&) = delete;
  InterruptsPassedOver& operator=(const InterruptsPassedOver&) = delete;
};

UniqueHandle start(const std::vector<std::string>& words) {
  std::string line = commandLine(words);
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
    const std::string reason = tessel::NYXUtils::getLastErrorMessage();
    throw std::runtime_error("cannot start '" + words.front() + "': " + reason);
  }
  const UniqueHandle thread(process.hThread);
  return UniqueHandle(process.hProcess);
}

constexpr const char* kExtension = ".exe";

// The system adds the extension only to a name without any.
std::string searchPath(const std::string& name) {
  constexpr DWORD kLongestPath = 32768;
  std::string path(kLongestPath, '\0');
  path.resize(SearchPathA(nullptr, name.c_str(), kExtension, kLongestPath, path.data(), nullptr));
  return path;
}

}  // namespace

std::string commandLine(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) {
    if (!line.empty()) line += ' ';
    // Only where it must be: not every program reads quotation marks as these rules have it.
    const bool plain = !word.empty() && word.find_first_of(" \t\"") == std::string::npos;
    line += plain ? word : tessel::NYXProcess::quoteArgument(word);
  }
  return line;
}

int runProgram(const std::vector<std::string>& words) {
  const InterruptsPassedOver interrupts;
  const UniqueHandle process = start(words);
  DWORD code = 0;
  WaitForSingleObject(process.get(), INFINITE);
  GetExitCodeProcess(process.get(), &code);
  return static_cast<int>(code);
}

// The case of a name does not matter to the system, but that of its end does to NYXProcess.
std::string findProgram(const std::string& name) {
  std::string path = searchPath(name);
  if (path.empty()) path = searchPath(name + kExtension);
  if (path.empty()) throw std::runtime_error("cannot find the program '" + name + "' in the search path");
  const std::size_t end = path.size() < 4 ? 0 : path.size() - 4;
  if (lstrcmpiA(path.c_str() + end, kExtension) != 0) throw std::runtime_error("'" + path + "' is no .exe program");
  return path.replace(end, std::string::npos, kExtension);
}

}  // namespace tesselctl
