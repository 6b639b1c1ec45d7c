#include "internal/DiagnosticsLock.h"

#include <tessel/NYXThreadSyncImpl.h>

#include <atomic>

#include "internal/ThreadState.h"

namespace tessel::internal {
namespace {

std::atomic<bool> javaProcess{false};

}  // namespace

NoBlockingTrace::NoBlockingTrace() noexcept : NoBlockingTrace(threadState()) {}

NoBlockingTrace::NoBlockingTrace(ThreadState& thread) noexcept : marks_(thread.noBlockingTrace) { ++marks_; }

NoBlockingTrace::~NoBlockingTrace() { --marks_; }

bool NoBlockingTrace::active(const ThreadState& thread) noexcept { return thread.noBlockingTrace != 0; }

void setJavaProcess(bool is) noexcept { javaProcess = is; }

bool isJavaProcess() noexcept { return javaProcess.load(std::memory_order_relaxed); }

bool lockWithinLimit(NYXThreadSyncImpl& sync) {
  constexpr long kLimit = 250;  // milliseconds
  if (isJavaProcess()) return sync.tryLock(kLimit);
  sync.lock();
  return true;
}

NoTraceInJava::NoTraceInJava() noexcept : marks_(threadState().noTraceInJava) { ++marks_; }

NoTraceInJava::~NoTraceInJava() { --marks_; }

bool NoTraceInJava::active(const ThreadState& thread) noexcept { return isJavaProcess() && thread.noTraceInJava != 0; }

DiagnosticsLock::DiagnosticsLock(NYXThreadSync& sync) : sync_(sync), taken_(true) { sync_.lock(); }

DiagnosticsLock::DiagnosticsLock(NYXThreadSyncImpl& sync, WithinLimit) : sync_(sync), taken_(lockWithinLimit(sync)) {}

DiagnosticsLock::~DiagnosticsLock() {
  if (taken_) sync_.unlock();
}

InsideLogFile::InsideLogFile() noexcept : InsideLogFile(threadState()) {}

InsideLogFile::InsideLogFile(ThreadState& thread) noexcept : mark_(thread), filesEntered_(thread.insideLogFile) {
  ++filesEntered_;
}

InsideLogFile::~InsideLogFile() { --filesEntered_; }

bool InsideLogFile::active() noexcept { return threadState().insideLogFile != 0; }

}  // namespace tessel::internal
