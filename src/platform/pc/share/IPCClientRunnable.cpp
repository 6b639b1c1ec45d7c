#include <tessel/IPCClientRunnable.h>

#include <algorithm>
#include <array>
#include <exception>

#include <tessel/EventLog.h>
#include <tessel/IPCListener.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/Synchronize.h>

#include "internal/Bundles.h"
#include "internal/KeptOnThread.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/ThreadState.h"
#include "internal/pc/PipeName.h"
#include "internal/pc/Platform.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;

const RasDescriptor IPCClientRunnable::rd("IPCClientRunnable", internal::kMessages);

namespace {

// How often the next request is looked for before the thread gives back what is kept on it: seldom after a client that
// took its time.
constexpr int kFewLooks = 4;
constexpr int kManyLooks = 32;

// Marks the calling thread as a worker of that service.
class Serving {
 public:
  explicit Serving(const std::string& serviceName) { internal::threadState().serviceName = &serviceName; }
  ~Serving() { internal::threadState().serviceName = nullptr; }
  Serving(const Serving&) = delete;
  Serving& operator=(const Serving&) = delete;
};

}  // namespace

// Request and reply; what lies behind the request is zero when it is parsed.
struct IPCClientRunnable::Buffer {
  std::array<unsigned char, IPCMessage::MAX_MESSAGE_DATA_LEN + internal::kReadAhead> bytes{};
  DWORD length = 0;
  bool replyLost = false;  // and reported
  internal::KeptOnThread kept;
  int looks = kFewLooks;
  DWORD unread = 0;  // of the replies that the client may not have read yet, at most
};

IPCClientRunnable::IPCClientRunnable(const std::string& serviceName, void* pipeHandle, IPCListener& listener)
    : serviceName_(serviceName), pipeHandle_(pipeHandle), listener_(&listener), sync_(new NYXThreadSyncImpl) {
  const MethodTrace trace(rd, this, "IPCClientRunnable", serviceName, static_cast<const void*>(pipeHandle));
}

IPCClientRunnable::IPCClientRunnable(const IPCClientRunnable& other)
    : NYXRunnable(other),
      serviceName_(other.serviceName_),
      pipeHandle_(other.pipeHandle_),
      listener_(other.listener_),
      shutdownRequested_(other.shutdownRequested_),
      processingMessage_(other.processingMessage_),
      activity_(other.activity_),
      sync_(new NYXThreadSyncImpl) {}

IPCClientRunnable& IPCClientRunnable::operator=(const IPCClientRunnable& other) {
  if (this == &other) return *this;
  serviceName_ = other.serviceName_;
  pipeHandle_ = other.pipeHandle_;
  listener_ = other.listener_;
  const Synchronize guard(sync_);
  shutdownRequested_ = other.shutdownRequested_;
  processingMessage_ = other.processingMessage_;
  activity_ = other.activity_;
  return *this;
}

IPCClientRunnable::~IPCClientRunnable() {
  const MethodTrace trace(rd, this, "~IPCClientRunnable");
  delete sync_;
}

long IPCClientRunnable::run() {
  MethodTrace trace(rd, this, "run", serviceName_);
  const Serving serving(serviceName_);
  Buffer buffer;
  try {
    const long result = exchangeUntilEnd(buffer);
    buffer.kept.release();
    flush(buffer);
    return trace.result(result);
  } catch (const std::exception& exception) {
    // The client must not wait for a reply that never comes.
    setActivity(Activity::leaving);
    DisconnectNamedPipe(pipeHandle_);
    throw trace.thrown(NYXException(exception.what()));
  }
}

long IPCClientRunnable::exchangeUntilEnd(Buffer& buffer) {
  long result = NO_ERROR;
  while (!isShutdownRequested()) {
    if (!read(buffer, result)) break;
    answer(buffer);
    if (!write(buffer, result)) break;
    setProcessingMessage(false);
  }
  return result;
}

// The thread never blocks in its read while something is kept on it.
void IPCClientRunnable::lookForRequest(Buffer& buffer) const {
  if (!buffer.kept.any()) return;
  for (int i = 0; i < buffer.looks; ++i) {
    DWORD available = 0;
    if (!PeekNamedPipe(pipeHandle_, nullptr, 0, nullptr, &available, nullptr)) break;
    if (available > 0) {
      buffer.looks = kManyLooks;
      return;
    }
    SwitchToThread();
  }
  buffer.looks = kFewLooks;
  buffer.kept.release();
}

// A message longer than the buffer is reported and then answered from its beginning. The last error is cleared first:
// a message of no bytes leaves no number, is reported once and ends the worker.
bool IPCClientRunnable::read(Buffer& buffer, long& result) {
  const MethodTrace trace(rd, this, "read");
  buffer.bytes.fill(0);
  buffer.length = 0;
  lookForRequest(buffer);
  setActivity(Activity::reading);
  SetLastError(NO_ERROR);
  const bool done =
      ReadFile(pipeHandle_, buffer.bytes.data(), IPCMessage::MAX_MESSAGE_DATA_LEN, &buffer.length, nullptr) != 0;
  const LastError error;
  setActivity(Activity::processing);
  setProcessingMessage(true);
  if (done && buffer.length > 0) return true;
  if (error.number() == ERROR_BROKEN_PIPE) {
    trace.data(TraceLevel::MODERATE, "client disconnected");
    result = ERROR_BROKEN_PIPE;
    return false;
  }
  const bool cancelledByStop = error.number() == ERROR_OPERATION_ABORTED && isShutdownRequested();
  if (!cancelledByStop) {
    EventLog::errorNoFormat(rd, NLS::format(rd, "KTBNV0085_READ_FAILED", serviceName_, error.text()));
  }
  if (error.number() == ERROR_MORE_DATA) return true;
  result = static_cast<long>(error.number());
  return false;
}

void IPCClientRunnable::answer(Buffer& buffer) {
  const MethodTrace trace(rd, this, "answer");
  long id = 0;
  int length = 0;
  try {
    const IPCMessage request(buffer.bytes.data(), buffer.length);
    id = request.getMessageId();
    listener_->onMessage(request).getMessageBytes(buffer.bytes.data(), &length);
  } catch (const NYXException& exception) {
    trace.data(TraceLevel::MODERATE, "message processing failed", exception);
    IPCMessage(id, IPCMessage::STATUS_EXCEPTION, exception.getMessage()).getMessageBytes(buffer.bytes.data(), &length);
  }
  buffer.length = static_cast<DWORD>(length);
}

// Nor does it in its write: a reply that may have no room in the pipe waits until the client has read the ones before,
// unless the client goes on sending: it may mean to read later. So a thread never keeps anything for longer than it
// takes to fill the pipe with replies, however closely the requests follow each other.
void IPCClientRunnable::makeRoom(Buffer& buffer) const {
  using internal::kPipeSize;
  if (buffer.kept.any() && buffer.unread + buffer.length > kPipeSize) {
    buffer.kept.release();
    DWORD available = 0;
    const bool sendsOn = PeekNamedPipe(pipeHandle_, nullptr, 0, nullptr, &available, nullptr) && available > 0;
    if (!sendsOn && FlushFileBuffers(pipeHandle_)) buffer.unread = 0;
  }
  buffer.unread = std::min<DWORD>(buffer.unread + buffer.length, kPipeSize);
}

bool IPCClientRunnable::write(Buffer& buffer, long& result) {
  const MethodTrace trace(rd, this, "write");
  setActivity(Activity::writing);
  makeRoom(buffer);
  DWORD written = 0;
  SetLastError(NO_ERROR);
  const bool done = WriteFile(pipeHandle_, buffer.bytes.data(), buffer.length, &written, nullptr) != 0;
  const LastError error;
  setActivity(Activity::processing);
  if (done && written == buffer.length) return true;
  EventLog::errorNoFormat(rd, NLS::format(rd, "KTBNV0086_WRITE_FAILED", serviceName_, error.text()));
  buffer.replyLost = true;
  result = static_cast<long>(error.number());
  return false;
}

// A flush that a stop had to cancel is a reply that its client never read.
void IPCClientRunnable::flush(const Buffer& buffer) {
  const MethodTrace trace(rd, this, "flush");
  setActivity(Activity::leaving);
  if (FlushFileBuffers(pipeHandle_)) return;
  const LastError error;
  setActivity(Activity::processing);
  if (error.number() != ERROR_OPERATION_ABORTED || buffer.replyLost) return;
  EventLog::errorNoFormat(rd, NLS::format(rd, "KTBNV0086_WRITE_FAILED", serviceName_, error.text()));
}

bool IPCClientRunnable::shutdown() {
  MethodTrace trace(rd, this, "shutdown");
  return trace.result(setShutdownRequested(true));
}

void* const& IPCClientRunnable::getPipeHandle() const { return pipeHandle_; }

IPCClientRunnable::Activity IPCClientRunnable::getActivity() const {
  const Synchronize guard(sync_);
  return activity_;
}

bool IPCClientRunnable::cancelAt(Activity activity, NYXThreadImpl& thread) {
  const Synchronize guard(sync_);
  if (activity_ != activity) return false;
  thread.cancelBlockedCall();
  return true;
}

bool IPCClientRunnable::isServing(const std::string& serviceName) {
  const std::string* served = internal::threadState().serviceName;
  return served && *served == serviceName;
}

bool IPCClientRunnable::isShutdownRequested() const {
  const Synchronize guard(sync_);
  return shutdownRequested_;
}

bool IPCClientRunnable::setShutdownRequested(bool requested) {
  const Synchronize guard(sync_);
  shutdownRequested_ = requested;
  return processingMessage_;
}

// A worker that ends on its way stays marked so: it needs no push to end.
void IPCClientRunnable::setProcessingMessage(bool processing) {
  const Synchronize guard(sync_);
  processingMessage_ = processing;
}

void IPCClientRunnable::setActivity(Activity activity) {
  const Synchronize guard(sync_);
  activity_ = activity;
}

}  // namespace tessel
