#include "support/StartedChild.h"

#include <array>
#include <stdexcept>

#include "support/Event.h"

namespace tessel::test {
namespace {

constexpr const char* kVariable = "TESSEL_TEST_ARGUMENT";

}  // namespace

StartedChild::StartedChild(const std::string& body, const std::string& argument) {
  std::array<char, MAX_PATH> program{};
  GetModuleFileNameA(nullptr, program.data(), MAX_PATH);
  std::string commandLine = std::string("\"") + program.data() + "\" \"--child=" + body + "\"";
  SetEnvironmentVariableA(kVariable, argument.c_str());
  STARTUPINFOA start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  // Wine fails one launch in a thousand where a system does not let addresses be fixed.
  for (int triesLeft = 2;
       !CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process);
       --triesLeft) {
    if (triesLeft > 0 && GetLastError() == ERROR_INTERNAL_ERROR) continue;
    throw std::runtime_error("CreateProcess failed: " + std::to_string(GetLastError()));
  }
  CloseHandle(process.hThread);
  process_ = process.hProcess;
}

StartedChild::~StartedChild() {
  kill();
  CloseHandle(process_);
}

unsigned long StartedChild::exitCode() {
  const auto limit = std::chrono::duration_cast<std::chrono::milliseconds>(kWatchdog);
  WaitForSingleObject(process_, static_cast<DWORD>(limit.count()));
  DWORD code = 0;
  GetExitCodeProcess(process_, &code);
  return code;
}

void StartedChild::kill() {
  TerminateProcess(process_, 1);
  WaitForSingleObject(process_, INFINITE);
}

std::string StartedChild::argument() {
  std::array<char, 256> value{};
  GetEnvironmentVariableA(kVariable, value.data(), static_cast<DWORD>(value.size()));
  return value.data();
}

}  // namespace tessel::test
