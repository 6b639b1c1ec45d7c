#include <tessel/NYXThreadImpl.h>

#include <exception>
#include <iostream>

#include <tessel/EventLog.h>
#include <tessel/FFDC.h>
#include <tessel/NYXException.h>
#include <tessel/NYXRunnable.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/StandardStreams.h"
#include "internal/TypeName.h"
#include "internal/pc/Platform.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;

const RasDescriptor NYXThreadImpl::rd("NYXThreadImpl", internal::kMessages);

NYXThreadImpl::NYXThreadImpl(NYXRunnable* runnable) : NYXThread(runnable) {
  const MethodTrace trace(rd, this, "NYXThreadImpl", static_cast<const void*>(runnable));
}

NYXThreadImpl::NYXThreadImpl(const NYXThreadImpl& other) = default;
NYXThreadImpl& NYXThreadImpl::operator=(const NYXThreadImpl& other) = default;

// The handle stays open for the life of the process.
NYXThreadImpl::~NYXThreadImpl() { const MethodTrace trace(rd, this, "~NYXThreadImpl"); }

void NYXThreadImpl::start() {
  const MethodTrace trace(rd, this, "start");
  const auto entry = [](void* runnable) -> DWORD { return clientThreadWrapper(runnable); };
  threadHandle_ = CreateThread(nullptr, 0, entry, getRunnable(), 0, nullptr);
  if (!threadHandle_) {
    const LastError error;
    throw trace.failure<NYXException>("KTBNV0013_UNABLE_TO_CREATE_THREAD", error.numberText());
  }
}

void NYXThreadImpl::stop() {
  const MethodTrace trace(rd, this, "stop");
  if (!TerminateThread(threadHandle_, 0)) {
    const LastError error;
    throw trace.failure<NYXException>("KTBNV0014_UNABLE_TO_TERMINATE_THREAD", error.numberText());
  }
}

namespace {

NYXException waitFailure(const MethodTrace& trace, DWORD result, const LastError& error) {
  return result == WAIT_FAILED
             ? trace.failure<NYXException>("KTBNV0015_WAIT_FOR_THREAD_FAILED", error.numberText())
             : trace.failure<NYXException>("KTBNV0016_WAIT_FOR_THREAD_FAILED2", std::to_string(result));
}

}  // namespace

void NYXThreadImpl::join() {
  const MethodTrace trace(rd, this, "join");
  const DWORD result = WaitForSingleObject(threadHandle_, INFINITE);
  const LastError error;
  if (result != WAIT_OBJECT_0) throw waitFailure(trace, result, error);
}

// Polled: traces only a failure.
bool NYXThreadImpl::joinFor(unsigned long milliseconds) {
  const DWORD result = WaitForSingleObject(threadHandle_, milliseconds);
  const LastError error;
  if (result == WAIT_OBJECT_0) return true;
  if (result == WAIT_TIMEOUT) return false;
  const MethodTrace trace(rd, this, "joinFor", milliseconds);
  throw waitFailure(trace, result, error);
}

bool NYXThreadImpl::isAlive() {
  MethodTrace trace(rd, this, "isAlive");
  return trace.result(getExitCode() == STILL_ACTIVE);
}

long NYXThreadImpl::getExitCode() {
  MethodTrace trace(rd, this, "getExitCode");
  DWORD code = 0;
  if (!GetExitCodeThread(threadHandle_, &code)) {
    const LastError error;
    throw trace.failure<NYXException>("KTBNV0017_UNABLE_TO_GET_EXIT_CODE", error.numberText());
  }
  return trace.result(static_cast<long>(code));
}

void NYXThreadImpl::cancelBlockedCall() noexcept {
  if (threadHandle_) CancelSynchronousIo(threadHandle_);
}

unsigned long NYXThread::getCurrentThreadId() { return GetCurrentThreadId(); }

unsigned long NYXThreadImpl::getCurrentThreadId() { return GetCurrentThreadId(); }

namespace {

// Says what is about to end the process.
[[noreturn]] void endProcess(const std::string& type, const char* text) {
  internal::print(std::cerr, type + ": " + text + '\n');
  std::terminate();
}

unsigned long runReporting(NYXRunnable& runnable, const RasDescriptor& rd, const MethodTrace& trace) {
  try {
    return static_cast<unsigned long>(runnable.run());
  } catch (const NYXException& exception) {
    trace.data(TraceLevel::MODERATE, "Uncaught exception", exception);
    EventLog::errorNoFormat(rd, NLS::format(RasDescriptor("Unknown", internal::kMessages, nullptr),
                                            "KTBNV0149_UNCAUGHT_EXCEPTION", exception.toString()));
    FFDC::capture(internal::classText(typeid(NYXThreadImpl)), "clientThreadWrapper", FFDC::PROBE_001(), &exception);
    return static_cast<unsigned long>(-1);
  } catch (const std::exception& exception) {
    endProcess(internal::classText(typeid(exception)), exception.what());
  } catch (...) {
    endProcess("an exception that is no std::exception", "escaped from a thread");
  }
}

}  // namespace

unsigned long NYXThreadImpl::clientThreadWrapper(void* runnable) noexcept {
  Trace::dropMethodStack();
  unsigned long code = 0;
  {
    MethodTrace trace(rd, nullptr, "clientThreadWrapper", static_cast<const void*>(runnable));
    code = trace.result(runReporting(*static_cast<NYXRunnable*>(runnable), rd, trace));
  }
  Trace::dropMethodStack();
  return code;
}

}  // namespace tessel
