#include "support/ChildProcess.h"

#include <windows.h>

#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <stdexcept>

namespace tessel::test {
namespace {

constexpr const char* kArgument = "--child=";

std::map<std::string, ChildBody>& bodies() {
  static std::map<std::string, ChildBody> instance;
  return instance;
}

struct HandleCloser {
  void operator()(void* handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

void require(bool done, const char* what) {
  if (!done) throw std::runtime_error(std::string(what) + " failed: " + std::to_string(GetLastError()));
}

// Whatever is in the job ends with the last handle to it.
Handle makeJob() {
  Handle job(CreateJobObjectA(nullptr, nullptr));
  require(job != nullptr, "CreateJobObject");
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  require(SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits) != 0,
          "SetInformationJobObject");
  return job;
}

std::string thisProgram() {
  std::array<char, MAX_PATH> path{};
  require(GetModuleFileNameA(nullptr, path.data(), MAX_PATH) != 0, "GetModuleFileName");
  return path.data();
}

std::string readToEnd(HANDLE pipe) {
  std::string text;
  std::array<char, 4096> block{};
  DWORD length = 0;
  while (ReadFile(pipe, block.data(), static_cast<DWORD>(block.size()), &length, nullptr) && length > 0) {
    text.append(block.data(), length);
  }
  return text;
}

// Returns the process; its primary thread waits to be resumed through `thread`.
Handle startSuspended(const std::string& name, HANDLE standardError, Handle& thread) {
  std::string commandLine = "\"" + thisProgram() + "\" \"" + kArgument + name + "\"";
  STARTUPINFOA start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdError = standardError;
  PROCESS_INFORMATION process{};
  require(CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr, nullptr,
                         &start, &process) != 0,
          "CreateProcess");
  thread.reset(process.hThread);
  return Handle(process.hProcess);
}

}  // namespace

ChildRegistration::ChildRegistration(const std::string& name, ChildBody body) { bodies()[name] = body; }

ChildResult runChild(const std::string& name) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  HANDLE readEnd = nullptr;
  HANDLE writeEnd = nullptr;
  require(CreatePipe(&readEnd, &writeEnd, &inherited, 0) != 0, "CreatePipe");
  const Handle output(readEnd);
  Handle input(writeEnd);
  SetHandleInformation(output.get(), HANDLE_FLAG_INHERIT, 0);

  const Handle job = makeJob();
  Handle thread;
  const Handle process = startSuspended(name, input.get(), thread);
  require(AssignProcessToJobObject(job.get(), process.get()) != 0, "AssignProcessToJobObject");
  ResumeThread(thread.get());
  input.reset();

  ChildResult result{0, readToEnd(output.get())};
  WaitForSingleObject(process.get(), INFINITE);
  GetExitCodeProcess(process.get(), &result.exitCode);
  return result;
}

std::optional<int> runAsChild(int argc, char** argv) {
  if (argc < 2 || std::strncmp(argv[1], kArgument, std::strlen(kArgument)) != 0) return std::nullopt;
  return bodies().at(argv[1] + std::strlen(kArgument))();
}

}  // namespace tessel::test
