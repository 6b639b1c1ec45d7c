#include <tessel/IPCClientRunnable.h>

#include <array>
#include <exception>

#include <tessel/EventLog.h>
#include <tessel/IPCListener.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/Synchronize.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/pc/PipeName.h"
#include "internal/pc/Platform.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;

const RasDescriptor IPCClientRunnable::rd("IPCClientRunnable", internal::kMessages);

namespace {

thread_local const std::string* servedHere = nullptr;

}  // namespace

// Request and reply; what lies behind the request is zero when it is parsed.
struct IPCClientRunnable::Buffer {
  std::array<unsigned char, IPCMessage::MAX_MESSAGE_DATA_LEN + internal::kReadAhead> bytes{};
  DWORD length = 0;
};

IPCClientRunnable::IPCClientRunnable(const std::string& serviceName, void* pipeHandle, IPCListener& listener)
    : serviceName_(serviceName), pipeHandle_(pipeHandle), listener_(listener), sync_(new NYXThreadSyncImpl) {
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

IPCClientRunnable::~IPCClientRunnable() {
  const MethodTrace trace(rd, this, "~IPCClientRunnable");
  delete sync_;
}

long IPCClientRunnable::run() {
  MethodTrace trace(rd, this, "run", serviceName_);
  servedHere = &serviceName_;
  Buffer buffer;
  try {
    const long result = exchangeUntilEnd(buffer);
    setActivity(Activity::leaving);
    FlushFileBuffers(pipeHandle_);
    return trace.result(result);
  } catch (const std::exception& exception) {
    // The client must not wait for a reply that never comes.
    setActivity(Activity::leaving);
    DisconnectNamedPipe(pipeHandle_);
    throw trace.thrown(NYXException(exception.what()));
  }
}

long IPCClientRunnable::exchangeUntilEnd(Buffer& buffer) {
  while (!isShutdownRequested()) {
    long result = read(buffer);
    if (result != NO_ERROR) return result;
    answer(buffer);
    result = write(buffer);
    if (result != NO_ERROR) return result;
    setActivity(Activity::reading);
  }
  return NO_ERROR;
}

// A message longer than the buffer is reported and then answered from its beginning.
long IPCClientRunnable::read(Buffer& buffer) {
  MethodTrace trace(rd, this, "read");
  buffer.bytes.fill(0);
  buffer.length = 0;
  SetLastError(NO_ERROR);
  const bool done =
      ReadFile(pipeHandle_, buffer.bytes.data(), IPCMessage::MAX_MESSAGE_DATA_LEN, &buffer.length, nullptr);
  const LastError error;
  setActivity(Activity::processing);
  if (done && buffer.length > 0) return NO_ERROR;
  if (error.number() == ERROR_BROKEN_PIPE) {
    trace.data(TraceLevel::MODERATE, "client disconnected");
    return ERROR_BROKEN_PIPE;
  }
  const bool cancelledByStop = error.number() == ERROR_OPERATION_ABORTED && isShutdownRequested();
  if (!cancelledByStop) {
    EventLog::errorNoFormat(rd, NLS::format(rd, "KTBNV0085_READ_FAILED", serviceName_, error.text()));
  }
  if (error.number() == ERROR_MORE_DATA) return NO_ERROR;
  // A message of no bytes leaves no error number, and ends the worker all the same.
  return error.number() == NO_ERROR ? ERROR_NO_DATA : static_cast<long>(error.number());
}

void IPCClientRunnable::answer(Buffer& buffer) {
  const MethodTrace trace(rd, this, "answer");
  long id = 0;
  int length = 0;
  try {
    const IPCMessage request(buffer.bytes.data(), buffer.length);
    id = request.getMessageId();
    listener_.onMessage(request).getMessageBytes(buffer.bytes.data(), &length);
  } catch (const NYXException& exception) {
    trace.data(TraceLevel::MODERATE, "message processing failed", exception);
    IPCMessage(id, IPCMessage::STATUS_EXCEPTION, exception.getMessage()).getMessageBytes(buffer.bytes.data(), &length);
  }
  buffer.length = static_cast<DWORD>(length);
}

long IPCClientRunnable::write(const Buffer& buffer) {
  const MethodTrace trace(rd, this, "write");
  setActivity(Activity::writing);
  DWORD written = 0;
  SetLastError(NO_ERROR);
  const bool done = WriteFile(pipeHandle_, buffer.bytes.data(), buffer.length, &written, nullptr);
  const LastError error;
  if (done && written == buffer.length) return NO_ERROR;
  EventLog::errorNoFormat(rd, NLS::format(rd, "KTBNV0086_WRITE_FAILED", serviceName_, error.text()));
  return error.number() == NO_ERROR ? ERROR_WRITE_FAULT : static_cast<long>(error.number());
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

bool IPCClientRunnable::isServing(const std::string& serviceName) { return servedHere && *servedHere == serviceName; }

bool IPCClientRunnable::isShutdownRequested() const {
  const Synchronize guard(sync_);
  return shutdownRequested_;
}

bool IPCClientRunnable::setShutdownRequested(bool requested) {
  const Synchronize guard(sync_);
  shutdownRequested_ = requested;
  return processingMessage_;
}

// A worker that ends on its way stays marked as processing: it needs no push to end.
void IPCClientRunnable::setActivity(Activity activity) {
  const Synchronize guard(sync_);
  activity_ = activity;
  if (activity == Activity::processing) processingMessage_ = true;
  if (activity == Activity::reading) processingMessage_ = false;
}

}  // namespace tessel
