#include <tessel/NYXProcessImpl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>
#include <ostream>
#include <utility>

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

// What the child is to have is inheritable only while it is launched. Returns the key of the failure, null for none.
const char* openPipes(Pipe& input, Pipe& output, Pipe& error) {
  if (!open(output)) return "KTBNV0001_CREATE_PIPE_STDOUT";
  if (!disinherit(output.readEnd.get())) return "KTBNV0002_HANDLE_INFO_STDOUT";
  if (!open(input)) return "KTBNV0003_CREATE_PIPE_STDIN";
  if (!disinherit(input.writeEnd.get())) return "KTBNV0004_HANDLE_INFO_STDIN";
  if (!open(error)) return "KTBNV0005_CREATE_PIPE_STDERR";
  if (!disinherit(error.readEnd.get())) return "KTBNV0006_HANDLE_INFO_STDERR";
  if (!disinherit(output.writeEnd.get())) return "KTBNV0002_HANDLE_INFO_STDOUT";
  if (!disinherit(input.readEnd.get())) return "KTBNV0004_HANDLE_INFO_STDIN";
  if (!disinherit(error.writeEnd.get())) return "KTBNV0006_HANDLE_INFO_STDERR";
  return nullptr;
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

  // The system may change the line while it works.
  std::optional<LastError> launch(const std::string& name, std::string line, const std::string& directory) {
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.readEnd.get();
    startup.hStdOutput = output.pipe().writeEnd.get();
    startup.hStdError = error.pipe().writeEnd.get();
    PROCESS_INFORMATION information{};
    const std::array<HANDLE, 3> inherited{startup.hStdInput, startup.hStdOutput, startup.hStdError};
    Process prepared = std::make_shared<UniqueHandle>();

    const InheritanceLock lock;
    const bool launched = std::all_of(inherited.begin(), inherited.end(), internal::inherit) &&
                          CreateProcessA(name.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                         directory.empty() ? nullptr : directory.c_str(), &startup, &information) != 0;
    const LastError failure;
    // A failure here can only be passed over: the child may run already. Of its ends only that of its input then stays
    // open here, and a later child that inherits it does no more than keep a write to a dead child from failing.
    for (const HANDLE handle : inherited) disinherit(handle);
    if (!launched) return failure;
    started(information, std::move(prepared));
    return std::nullopt;
  }

  // Nothing here may fail: the child runs already. Called while nothing else is launched, which could inherit the ends.
  void started(const PROCESS_INFORMATION& information, Process prepared) noexcept {
    prepared->reset(information.hProcess);
    const Synchronize guard(processState());
    process = std::move(prepared);
    thread = UniqueHandle(information.hThread);
    id = information.dwProcessId;
    output.pipe().writeEnd.reset();
    error.pipe().writeEnd.reset();
  }

  // Asked outside the lock, the system may answer after another thread has kept the code of the end: what is final
  // stays. The child may also end with the number that stands for one that runs.
  int keepExitCode(const UniqueHandle& of, bool hasEnded) {
    DWORD code = 0;
    const bool known = GetExitCodeProcess(of.get(), &code) != 0;
    const Synchronize guard(processState());
    if (!known || codeIsFinal) return exitCode;
    exitCode = static_cast<int>(code);
    codeIsFinal = hasEnded || code != STILL_ACTIVE;
    if (codeIsFinal) input.readEnd.reset();
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

  bool isReadHere() const { return output.isReadHere() || error.isReadHere(); }

  // Until their readers have ended listeners may ask for what is here, whichever stream they read.
  void close() noexcept {
    input.writeEnd.reset();
    output.pipe().writeEnd.reset();
    error.pipe().writeEnd.reset();
    output.endReaders();
    error.endReaders();
  }

  Pipe input;
  ProcessStream output;
  ProcessStream error;
  Process process;
  UniqueHandle thread;
  unsigned long id = 0;
  int exitCode = -1;
  bool codeIsFinal = false;
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
  child_->close();
}

void NYXProcessImpl::init(int argc, char** const argv, const std::string& workingDirectory) {
  const Arguments arguments{argc, argv};
  const MethodTrace trace(rd, this, "init", arguments, workingDirectory);
  program_ = arguments.at(0);
  for (int i = 1; i < argc; ++i) commandLine_ += (i == 1 ? "" : " ") + escape(arguments.at(i), i == 1);
  workingDirectory_ = workingDirectory;
  createPipes();
}

void NYXProcessImpl::createPipes() {
  const MethodTrace trace(rd, this, "createPipes");
  const auto [key, error] = [this] {
    const InheritanceLock lock;
    const char* const failure = openPipes(child_->input, child_->output.pipe(), child_->error.pipe());
    return std::pair(failure, LastError());
  }();
  if (key) throw trace.failure<NYXException>(key, error.numberText());
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
  if (const std::optional<LastError> error = child_->launch(name, commandLine, workingDirectory_)) {
    throw trace.failure<NYXException>("KTBNV0007_UNABLE_TO_CREATE_PROCESS", commandLine, error->numberText(),
                                      error->text());
  }
}

// The readers end by themselves: see waitForProcess().
void NYXProcessImpl::stop() {
  const MethodTrace trace(rd, this, "stop");
  const Child::Process process = child_->running();
  if (!process) return;
  // A child that cannot be terminated has ended already, or never will.
  const bool terminated = TerminateProcess(process->get(), 0) != 0;
  const DWORD end = WaitForSingleObject(process->get(), terminated ? kTerminationLimit : 0);
  child_->keepExitCode(*process, end == WAIT_OBJECT_0);
  child_->ended();
  child_->stopped = true;
  child_->giveUp();
}

int NYXProcessImpl::waitForProcess() {
  MethodTrace trace(rd, this, "waitForProcess");
  if (!child_->wasStarted()) return trace.result(-1);
  if (const Child::Process process = child_->running()) {
    const bool ended = WaitForSingleObject(process->get(), INFINITE) == WAIT_OBJECT_0;
    child_->keepExitCode(*process, ended);
    if (ended) child_->ended();
  }
  if (!child_->isReadHere()) {
    child_->output.join(child_->stopped);
    child_->error.join(child_->stopped);
  }
  return trace.result(getExitCode());
}

int NYXProcessImpl::getExitCode() {
  MethodTrace trace(rd, this, "getExitCode");
  if (const Child::Process process = child_->running()) return trace.result(child_->keepExitCode(*process, false));
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
