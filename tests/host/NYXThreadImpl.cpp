// The thread on std::thread. It cannot be terminated and no blocked call of it can be cancelled.
#include <tessel/NYXThreadImpl.h>

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <deque>
#include <future>
#include <mutex>
#include <system_error>
#include <thread>

#include <tessel/EventLog.h>
#include <tessel/FFDC.h>
#include <tessel/NYXException.h>
#include <tessel/NYXRunnable.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"
#include "internal/TypeName.h"

namespace tessel {

using internal::MethodTrace;

const RasDescriptor NYXThreadImpl::rd("NYXThreadImpl", internal::kMessages);

namespace {

constexpr long kStillActive = 259;

using ExitCode = std::shared_future<long>;

// As thread handles do, exit codes stay for the life of the process.
void* keep(ExitCode code) {
  static std::mutex& mutex = *new std::mutex;
  static std::deque<ExitCode>& codes = *new std::deque<ExitCode>;
  const std::lock_guard guard(mutex);
  return &codes.emplace_back(std::move(code));
}

const ExitCode* exitCodeOf(void* handle) { return static_cast<const ExitCode*>(handle); }

long runReporting(NYXRunnable& runnable, const RasDescriptor& rd) {
  try {
    return runnable.run();
  } catch (const NYXException& exception) {
    EventLog::errorNoFormat(rd, NLS::format(rd, "KTBNV0149_UNCAUGHT_EXCEPTION", exception.toString()));
    FFDC::capture(internal::classText(typeid(NYXThreadImpl)), "clientThreadWrapper", FFDC::PROBE_001(), &exception);
    return -1;
  }
}

}  // namespace

NYXThreadImpl::NYXThreadImpl(NYXRunnable* runnable) : NYXThread(runnable), threadHandle_(nullptr) {
  const MethodTrace trace(rd, this, "NYXThreadImpl", static_cast<const void*>(runnable));
}

NYXThreadImpl::NYXThreadImpl(const NYXThreadImpl& other) = default;
NYXThreadImpl& NYXThreadImpl::operator=(const NYXThreadImpl& other) = default;

NYXThreadImpl::~NYXThreadImpl() { const MethodTrace trace(rd, this, "~NYXThreadImpl"); }

void NYXThreadImpl::start() {
  const MethodTrace trace(rd, this, "start");
  std::packaged_task<long()> task(
      [runnable = getRunnable()] { return static_cast<long>(clientThreadWrapper(runnable)); });
  ExitCode code = task.get_future().share();
  try {
    std::thread(std::move(task)).detach();
    threadHandle_ = keep(std::move(code));
  } catch (const std::system_error& error) {
    throw trace.failure<NYXException>("KTBNV0013_UNABLE_TO_CREATE_THREAD", std::to_string(error.code().value()));
  }
}

void NYXThreadImpl::stop() {
  const MethodTrace trace(rd, this, "stop");
  throw trace.failure<NYXException>("KTBNV0014_UNABLE_TO_TERMINATE_THREAD", std::to_string(ENOTSUP));
}

void NYXThreadImpl::join() {
  const MethodTrace trace(rd, this, "join");
  if (!threadHandle_) throw trace.failure<NYXException>("KTBNV0015_WAIT_FOR_THREAD_FAILED", std::to_string(ESRCH));
  exitCodeOf(threadHandle_)->wait();
}

bool NYXThreadImpl::joinFor(unsigned long milliseconds) {
  const MethodTrace trace(rd, this, "joinFor");
  if (!threadHandle_) throw trace.failure<NYXException>("KTBNV0015_WAIT_FOR_THREAD_FAILED", std::to_string(ESRCH));
  return exitCodeOf(threadHandle_)->wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready;
}

bool NYXThreadImpl::isAlive() { return getExitCode() == kStillActive; }

long NYXThreadImpl::getExitCode() {
  MethodTrace trace(rd, this, "getExitCode");
  if (!threadHandle_) throw trace.failure<NYXException>("KTBNV0017_UNABLE_TO_GET_EXIT_CODE", std::to_string(ESRCH));
  const ExitCode& code = *exitCodeOf(threadHandle_);
  const bool ended = code.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
  return trace.result(ended ? code.get() : kStillActive);
}

void NYXThreadImpl::cancelBlockedCall() noexcept {}

unsigned long NYXThread::getCurrentThreadId() {
  static thread_local const auto id = static_cast<unsigned long>(gettid());
  return id;
}

unsigned long NYXThreadImpl::getCurrentThreadId() { return NYXThread::getCurrentThreadId(); }

unsigned long NYXThreadImpl::clientThreadWrapper(void* runnable) noexcept {
  Trace::getInstance().dropMethodStack();
  unsigned long code = 0;
  {
    MethodTrace trace(rd, nullptr, "clientThreadWrapper", static_cast<const void*>(runnable));
    code = trace.result(static_cast<unsigned long>(runReporting(*static_cast<NYXRunnable*>(runnable), rd)));
  }
  Trace::getInstance().dropMethodStack();
  return code;
}

}  // namespace tessel
