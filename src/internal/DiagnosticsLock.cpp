#include "internal/DiagnosticsLock.h"

#include <tessel/NYXThreadSyncImpl.h>

#include <atomic>

namespace tessel::internal {
namespace {

thread_local unsigned marks = 0;
thread_local unsigned silences = 0;
thread_local unsigned filesEntered = 0;

std::atomic<bool> javaProcess{false};

}  // namespace

NoBlockingTrace::NoBlockingTrace() noexcept : marks_(marks) { ++marks_; }

NoBlockingTrace::~NoBlockingTrace() { --marks_; }

bool NoBlockingTrace::active() noexcept { return marks != 0; }

void setJavaProcess(bool is) noexcept { javaProcess = is; }

bool isJavaProcess() noexcept { return javaProcess.load(std::memory_order_relaxed); }

bool lockWithinLimit(NYXThreadSyncImpl& sync) {
  constexpr long kLimit = 250;  // milliseconds
  if (isJavaProcess()) return sync.tryLock(kLimit);
  sync.lock();
  return true;
}

NoTraceInJava::NoTraceInJava() noexcept : marks_(silences) { ++marks_; }

NoTraceInJava::~NoTraceInJava() { --marks_; }

bool NoTraceInJava::active() noexcept { return isJavaProcess() && silences != 0; }

DiagnosticsLock::DiagnosticsLock(NYXThreadSync& sync) : sync_(sync), taken_(true) { sync_.lock(); }

DiagnosticsLock::DiagnosticsLock(NYXThreadSyncImpl& sync, WithinLimit) : sync_(sync), taken_(lockWithinLimit(sync)) {}

DiagnosticsLock::~DiagnosticsLock() {
  if (taken_) sync_.unlock();
}

InsideLogFile::InsideLogFile() noexcept : filesEntered_(filesEntered) { ++filesEntered_; }

InsideLogFile::~InsideLogFile() { --filesEntered_; }

bool InsideLogFile::active() noexcept { return filesEntered != 0; }

}  // namespace tessel::internal
