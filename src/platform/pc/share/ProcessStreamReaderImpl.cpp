#include <tessel/ProcessStreamReaderImpl.h>

#include <algorithm>
#include <string>

#include <tessel/NYXThreadImpl.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/pc/Platform.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;

const RasDescriptor ProcessStreamReaderImpl::rd("ProcessStreamReaderImpl", internal::kMessages);

namespace {

constexpr std::size_t kBufferSize = 65536;

}  // namespace

ProcessStreamReaderImpl::ProcessStreamReaderImpl(void* handle, ProcessStreamReaderListener& listener)
    : ProcessStreamReader(listener), handle_(handle) {
  const MethodTrace trace(rd, this, "ProcessStreamReaderImpl", static_cast<const void*>(handle));
}

ProcessStreamReaderImpl::~ProcessStreamReaderImpl() { const MethodTrace trace(rd, this, "~ProcessStreamReaderImpl"); }

long ProcessStreamReaderImpl::run() {
  MethodTrace trace(rd, this, "run");
  threadId_ = GetCurrentThreadId();
  std::vector<char> buffer(kBufferSize);
  long result = NO_ERROR;
  while (mayRead()) {
    const unsigned long bytesRead = read(buffer, result);
    if (bytesRead == 0) {
      if (result == ERROR_OPERATION_ABORTED && ending_ != Ending::none) continue;
      break;
    }
    unread_ -= std::min(unread_, bytesRead);
    buffer[bytesRead] = '\0';
    const std::string data(buffer.data());
    trace.data(TraceLevel::MODERATE, "bytesRead: ", bytesRead, " data: ", data);
    deliver(data);
  }
  threadId_ = 0;
  return trace.result(result);
}

// Before the end everything is read that was in the pipe when the wish was seen, and no more: whoever else holds the
// other end may write for ever.
bool ProcessStreamReaderImpl::mayRead() {
  if (ending_ != Ending::drained) return ending_ == Ending::none;
  if (!counted_) {
    PeekNamedPipe(handle_, nullptr, 0, nullptr, &unread_, nullptr);
    counted_ = true;
  }
  return unread_ > 0;
}

// Returns 0 at the end of the stream.
unsigned long ProcessStreamReaderImpl::read(std::vector<char>& buffer, long& result) {
  DWORD bytesRead = 0;
  activity_ = Activity::reading;
  const bool done = ReadFile(handle_, buffer.data(), kBufferSize - 1, &bytesRead, nullptr) != 0;
  const LastError error;
  leaveRead();
  result = done ? NO_ERROR : static_cast<long>(error.number());
  return done ? bytesRead : 0;
}

// Whoever cancels has finished when this returns, and cannot hit a call of the listener.
void ProcessStreamReaderImpl::leaveRead() {
  for (Activity expected = Activity::reading; !activity_.compare_exchange_weak(expected, Activity::other);) {
    expected = Activity::reading;
    SwitchToThread();
  }
}

void ProcessStreamReaderImpl::stop() { ending_ = Ending::now; }

void ProcessStreamReaderImpl::drain() {
  Ending expected = Ending::none;
  ending_.compare_exchange_strong(expected, Ending::drained);
}

bool ProcessStreamReaderImpl::cancelRead(NYXThreadImpl& thread) {
  Activity expected = Activity::reading;
  if (!activity_.compare_exchange_strong(expected, Activity::cancelled)) return false;
  thread.cancelBlockedCall();
  activity_ = Activity::reading;
  return true;
}

bool ProcessStreamReaderImpl::isRunningHere() const { return threadId_ == GetCurrentThreadId(); }

}  // namespace tessel
