#include "Process.h"

#include <stdexcept>

#include <tessel/NYXUtils.h>

#include "internal/pc/UniqueHandle.h"

namespace tesselctl {
namespace {

using tessel::internal::UniqueHandle;

// Backslashes stand for themselves unless a quotation mark follows: the closing one, too.
void appendQuoted(std::string& line, const std::string& word) {
  std::size_t backslashes = 0;
  line += '"';
  for (const char c : word) {
    if (c == '"') line.append(backslashes + 1, '\\');
    backslashes = c == '\\' ? backslashes + 1 : 0;
    line += c;
  }
  line.append(backslashes, '\\');
  line += '"';
}

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

}  // namespace

std::string commandLine(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) {
    if (!line.empty()) line += ' ';
    // Only where it must be: not every program reads quotation marks as these rules have it.
    if (word.empty() || word.find_first_of(" \t\"") != std::string::npos) {
      appendQuoted(line, word);
    } else {
      line += word;
    }
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

}  // namespace tesselctl
