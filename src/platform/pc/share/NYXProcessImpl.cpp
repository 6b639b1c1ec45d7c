#include <tessel/NYXProcessImpl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <ostream>

#include <tessel/NYXException.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/pc/PipeInheritance.h"
#include "internal/pc/ProcessStream.h"

namespace tessel {

using internal::disinherit;
using internal::InheritanceLock;
using internal::LastError;
using internal::MethodTrace;
using internal::Pipe;
using internal::processState;
using internal::ProcessStream;
using internal::UniqueHandle;

const RasDescriptor NYXProcessImpl::rd("NYXProcessImpl", internal::kMessages);

namespace {

constexpr DWORD kTerminationLimit = 5000;  // milliseconds

struct Arguments {
  int argc;
  char** argv;

  std::string at(int i) const { return i < argc && argv && argv[i] ? argv[i] : ""; }
};

std::ostream& operator<<(std::ostream& stream, const Arguments& arguments) {
  for (int i = 0; arguments.argv && i < arguments.argc; ++i) {
    stream << (i == 0 ? "" : ", ") << (arguments.argv[i] ? arguments.argv[i] : "null");
  }
  return stream;
}

std::string executableName(const std::string& program) {
  const std::string extension = ".exe";
  return program.size() > extension.size() && program.ends_with(extension) ? program : program + extension;
}

bool open(Pipe& pipe) {
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  return CreatePipe(pipe.readEnd.receive(), pipe.writeEnd.receive(), &inheritable, 0) != 0;
}

}  // namespace

// The system's process object and what is known of it; guarded by processState() where several threads use it.
struct NYXProcessImpl::Child {
  // Whoever waits for the process keeps it open while stop() gives it up.
  using Process = std::shared_ptr<UniqueHandle>;

  Process running() const {
    const Synchronize guard(processState());
    return process;
  }

  bool wasStarted() const {
    const Synchronize guard(processState());
    return id != 0;
  }

  void started(const PROCESS_INFORMATION& information) {
    const Synchronize guard(processState());
    process = std::make_shared<UniqueHandle>(information.hProcess);
    thread = UniqueHandle(information.hThread);
    id = information.dwProcessId;
    output.pipe().writeEnd.reset();
    error.pipe().writeEnd.reset();
  }

  int keepExitCode(const UniqueHandle& of) {
    DWORD code = 0;
    const bool known = GetExitCodeProcess(of.get(), &code) != 0;
    const Synchronize guard(processState());
    if (known) exitCode = static_cast<int>(code);
    if (known && code != STILL_ACTIVE) input.readEnd.reset();
    return exitCode;
  }

  // The end of the child is known: whoever writes to it fails instead of waiting.
  void ended() {
    const Synchronize guard(processState());
    input.readEnd.reset();
  }

  void giveUp() {
    const Synchronize guard(processState());
    thread.reset();
    process.reset();
  }

  std::array<HANDLE, 3> inherited() {
    return {input.readEnd.get(), output.pipe().writeEnd.get(), error.pipe().writeEnd.get()};
  }

  Pipe input;
  ProcessStream output;
  ProcessStream error;
  Process process;
  UniqueHandle thread;
  unsigned long id = 0;
  int exitCode = -1;
  std::atomic<bool> stopped{false};
};

NYXProcessImpl::NYXProcessImpl(int argc, char** const argv) : child_(new Child) {
  const MethodTrace trace(rd, this, "NYXProcessImpl");
  init(argc, argv, "");
}

NYXProcessImpl::NYXProcessImpl(int argc, char** const argv, const std::string& workingDirectory) : child_(new Child) {
  const MethodTrace trace(rd, this, "NYXProcessImpl");
  init(argc, argv, workingDirectory);
}

NYXProcessImpl::~NYXProcessImpl() {
  const MethodTrace trace(rd, this, "~NYXProcessImpl");
  child_->input.writeEnd.reset();
}

void NYXProcessImpl::init(int argc, char** const argv, const std::string& workingDirectory) {
  const Arguments arguments{argc, argv};
  const MethodTrace trace(rd, this, "init", arguments, workingDirectory);
  program_ = arguments.at(0);
  for (int i = 1; i < argc; ++i) commandLine_ += (i == 1 ? "" : " ") + escape(arguments.at(i), i == 1);
  workingDirectory_ = workingDirectory;
  createPipes();
}

// What the child is to have is inheritable only while it is launched.
void NYXProcessImpl::createPipes() {
  const MethodTrace trace(rd, this, "createPipes");
  const auto failure = [&](const char* key) {
    const LastError error;
    return trace.failure<NYXException>(key, error.numberText());
  };
  Pipe& input = child_->input;
  Pipe& output = child_->output.pipe();
  Pipe& error = child_->error.pipe();
  const InheritanceLock lock;
  if (!open(output)) throw failure("KTBNV0001_CREATE_PIPE_STDOUT");
  if (!disinherit(output.readEnd.get())) throw failure("KTBNV0002_HANDLE_INFO_STDOUT");
  if (!open(input)) throw failure("KTBNV0003_CREATE_PIPE_STDIN");
  if (!disinherit(input.writeEnd.get())) throw failure("KTBNV0004_HANDLE_INFO_STDIN");
  if (!open(error)) throw failure("KTBNV0005_CREATE_PIPE_STDERR");
  if (!disinherit(error.readEnd.get())) throw failure("KTBNV0006_HANDLE_INFO_STDERR");
  if (!disinherit(output.writeEnd.get())) throw failure("KTBNV0002_HANDLE_INFO_STDOUT");
  if (!disinherit(input.readEnd.get())) throw failure("KTBNV0004_HANDLE_INFO_STDIN");
  if (!disinherit(error.writeEnd.get())) throw failure("KTBNV0006_HANDLE_INFO_STDERR");
}

std::string NYXProcessImpl::escape(const std::string& arg, bool splitAtColon) {
  if (arg.starts_with('"')) return arg;
  const std::size_t colon = splitAtColon ? arg.find(':') : std::string::npos;
  const std::size_t quoted = colon == std::string::npos ? 0 : colon + 1;
  return arg.substr(0, quoted) + '"' + arg.substr(quoted) + '"';
}

void NYXProcessImpl::start() {
  const MethodTrace trace(rd, this, "start", program_, workingDirectory_);
  if (child_->wasStarted()) throw trace.failure<NYXException>("KTBNV0179_PROCESS_ALREADY_STARTED", program_);
  const std::string name = executableName(program_);
  const std::string commandLine = '"' + name + "\" " + commandLine_;
  std::string writable = commandLine;  // the system may change it while it works
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = child_->input.readEnd.get();
  startup.hStdOutput = child_->output.pipe().writeEnd.get();
  startup.hStdError = child_->error.pipe().writeEnd.get();
  PROCESS_INFORMATION information{};

  const InheritanceLock lock;
  const char* const directory = workingDirectory_.empty() ? nullptr : workingDirectory_.c_str();
  const std::array<HANDLE, 3> inherited = child_->inherited();
  const bool launched = std::all_of(inherited.begin(), inherited.end(), internal::inherit) &&
                        CreateProcessA(name.c_str(), writable.data(), nullptr, nullptr, TRUE, 0, nullptr, directory,
                                       &startup, &information) != 0;
  const LastError error;
  for (const HANDLE handle : inherited) disinherit(handle);
  if (!launched) {
    throw trace.failure<NYXException>("KTBNV0007_UNABLE_TO_CREATE_PROCESS", commandLine, error.numberText(),
                                      error.text());
  }
  child_->started(information);
}

// The readers end by themselves: see waitForProcess().
void NYXProcessImpl::stop() {
  const MethodTrace trace(rd, this, "stop");
  const Child::Process process = child_->running();
  if (!process) return;
  // A child that cannot be terminated has ended already, or never will.
  const bool terminated = TerminateProcess(process->get(), 0) != 0;
  WaitForSingleObject(process->get(), terminated ? kTerminationLimit : 0);
  child_->keepExitCode(*process);
  child_->ended();
  child_->stopped = true;
  child_->giveUp();
}

int NYXProcessImpl::waitForProcess() {
  MethodTrace trace(rd, this, "waitForProcess");
  if (!child_->wasStarted()) return trace.result(-1);
  if (const Child::Process process = child_->running()) {
    const bool ended = WaitForSingleObject(process->get(), INFINITE) == WAIT_OBJECT_0;
    child_->keepExitCode(*process);
    if (ended) child_->ended();
  }
  child_->output.join(child_->stopped);
  child_->error.join(child_->stopped);
  return trace.result(getExitCode());
}

int NYXProcessImpl::getExitCode() {
  MethodTrace trace(rd, this, "getExitCode");
  if (const Child::Process process = child_->running()) return trace.result(child_->keepExitCode(*process));
  const Synchronize guard(processState());
  return trace.result(child_->exitCode);
}

void* NYXProcessImpl::getInputStream() {
  MethodTrace trace(rd, this, "getInputStream");
  return trace.result(child_->input.writeEnd.get());
}

void* NYXProcessImpl::getOutputStream() {
  MethodTrace trace(rd, this, "getOutputStream");
  return trace.result(child_->output.pipe().readEnd.get());
}

void* NYXProcessImpl::getErrorStream() {
  MethodTrace trace(rd, this, "getErrorStream");
  return trace.result(child_->error.pipe().readEnd.get());
}

unsigned long NYXProcessImpl::getProcessId() {
  MethodTrace trace(rd, this, "getProcessId");
  return trace.result(child_->id);
}

unsigned long NYXProcess::getCurrentProcessId() { return GetCurrentProcessId(); }

void NYXProcessImpl::registerOutputStreamListener(ProcessStreamReaderListener& listener) {
  const MethodTrace trace(rd, this, "registerOutputStreamListener");
  if (child_->output.hasReader()) {
    trace.data(TraceLevel::MODERATE, "stopping previous outputStreamReaderThread");
  }
  child_->output.replaceReader(listener);
}

void NYXProcessImpl::registerErrorStreamListener(ProcessStreamReaderListener& listener) {
  const MethodTrace trace(rd, this, "registerErrorStreamListener");
  if (child_->error.hasReader()) trace.data(TraceLevel::MODERATE, "stopping previous errorStreamReaderThread");
  child_->error.replaceReader(listener);
}

void NYXProcessImpl::closeInputStream() {
  const MethodTrace trace(rd, this, "closeInputStream");
  child_->input.writeEnd.reset();
}

}  // namespace tessel
