#include <tessel/IPCClientImpl.h>

#include <algorithm>
#include <array>

#include <tessel/IPCNotFoundException.h>
#include <tessel/NYXException.h>

#include "internal/BigEndian.h"
#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/pc/PipeName.h"
#include "internal/pc/UniqueHandle.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;

const RasDescriptor IPCClientImpl::rd("IPCClientImpl", internal::kMessages);

namespace {

constexpr DWORD kBusyWait = 20000;
constexpr DWORD kHeader = 20;
constexpr DWORD kTextLengthOffset = 16;
constexpr int kLooks = 64;
constexpr unsigned long kLongestSleep = 100;  // ms until a cancelled exchange is noticed

}  // namespace

// One reply while it is read. Every read goes to the start of the buffer; the bytes behind it are zero.
struct IPCClientImpl::Reply {
  std::array<unsigned char, IPCMessage::MAX_MESSAGE_DATA_LEN + internal::kReadAhead> bytes{};
  DWORD length = 0;    // of the last read
  DWORD total = 0;     // of all reads
  DWORD expected = 0;  // known once a read brought a whole header

  void forgetLastRead() {
    bytes.fill(0);
    length = 0;
  }

  bool complete() const { return total >= expected; }
};

IPCClient* IPCClient::newInstance(const std::string& serviceName, const NativeProperties& properties) {
  return new IPCClientImpl(serviceName, properties);
}

IPCClientImpl::IPCClientImpl(const std::string& serviceName, const NativeProperties& properties)
    : IPCClient(serviceName, properties), busyWait_(kBusyWait) {
  const MethodTrace trace(rd, this, "IPCClientImpl", serviceName, properties);
}

IPCClientImpl::~IPCClientImpl() { const MethodTrace trace(rd, this, "~IPCClientImpl"); }

void IPCClientImpl::setBusyWait(unsigned long milliseconds) { busyWait_ = milliseconds; }

void IPCClientImpl::connect() {
  const MethodTrace trace(rd, this, "connect", getServiceName());
  if (pipeHandle_) throw trace.failure<NYXException>("KTBNV0065_ALREADY_CONNECTED");
  internal::UniqueHandle pipe(open(internal::pipePath(getServiceName())));
  trace.data(TraceLevel::MODERATE, "CreateFile successful handle is: ", static_cast<const void*>(pipe.get()));
  DWORD mode = PIPE_READMODE_MESSAGE;
  if (!SetNamedPipeHandleState(pipe.get(), &mode, nullptr, nullptr)) {
    const LastError error;
    throw trace.failure<NYXException>("KTBNV0068_PIPE_MODE_CHANGE_ERROR", getServiceName(), error.text());
  }
  pipeHandle_ = pipe.release();
}

void* IPCClientImpl::open(const std::string& path) {
  const MethodTrace trace(rd, this, "open", path);
  for (;;) {
    const HANDLE pipe = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_OVERLAPPED, nullptr);
    if (pipe != INVALID_HANDLE_VALUE) return pipe;
    const LastError error;
    switch (error.number()) {
      case ERROR_FILE_NOT_FOUND:
        throw trace.failure<IPCNotFoundException>("KTBNV0066_OPEN_ERROR", getServiceName(), error.text());
      case ERROR_ACCESS_DENIED:
        throw trace.failure<NYXException>("KTBNV0177_NOT_AUTHORIZED", getServiceName(), error.text());
      case ERROR_PIPE_BUSY:
        break;
      default:
        throw trace.failure<NYXException>("KTBNV0066_OPEN_ERROR", getServiceName(), error.text());
    }
    if (!WaitNamedPipeA(path.c_str(), busyWait_)) {
      const LastError timeout;
      throw trace.failure<NYXException>("KTBNV0067_OPEN_TIMEOUT", getServiceName(), timeout.text());
    }
  }
}

void IPCClientImpl::disconnect() {
  const MethodTrace trace(rd, this, "disconnect");
  if (!pipeHandle_) {
    trace.data(TraceLevel::MODERATE, "Pipe already closed.");
    return;
  }
  internal::UniqueHandle(pipeHandle_).reset();
  pipeHandle_ = nullptr;
  cancelled_ = false;
}

void IPCClientImpl::cancel() {
  const MethodTrace trace(rd, this, "cancel");
  cancelled_ = true;
}

IPCMessage IPCClientImpl::sendMessage(const IPCMessage& message, long timeoutMillis) {
  MethodTrace trace(rd, this, "sendMessage", message, timeoutMillis);
  if (!pipeHandle_ || cancelled_) throw trace.failure<NYXException>("KTBNV0062_NOT_CONNECTED");
  const long interval = timeoutMillis < 0 ? 1 : timeoutMillis;
  trace.data(TraceLevel::MODERATE, "Timeout changed to ", interval);
  send(message);
  trace.data(TraceLevel::MODERATE, "Message sent to server, receiving reply");
  Reply reply;
  receive(reply, static_cast<unsigned long>(interval));
  return trace.result(reply.length == 0 ? IPCMessage() : IPCMessage(reply.bytes.data(), reply.length));
}

void IPCClientImpl::send(const IPCMessage& message) {
  std::array<unsigned char, IPCMessage::MAX_MESSAGE_DATA_LEN> bytes;  // NOLINT: filled by the next line
  int length = 0;
  message.getMessageBytes(bytes.data(), &length);
  DWORD written = 0;
  if (!WriteFile(pipeHandle_, bytes.data(), static_cast<DWORD>(length), &written, nullptr)) {
    const LastError error;
    throw MethodTrace(rd, this, "send").failure<NYXException>("KTBNV0063_WRITE_FAILED", getServiceName(), error.text());
  }
}

// A read that is pending would have to wait for the polling interval; each look costs no more than that read.
void IPCClientImpl::lookForReply() const {
  for (int i = 0; i < kLooks; ++i) {
    DWORD available = 0;
    if (!PeekNamedPipe(pipeHandle_, nullptr, 0, nullptr, &available, nullptr) || available > 0) return;
    SwitchToThread();
  }
}

void IPCClientImpl::receive(Reply& reply, unsigned long interval) {
  const MethodTrace trace(rd, this, "receive");
  const internal::UniqueHandle event(CreateEventA(nullptr, TRUE, FALSE, nullptr));
  if (!event) {
    const LastError error;
    throw trace.failure<NYXException>("KTBNV0063_WRITE_FAILED", getServiceName(), error.text());
  }
  lookForReply();
  do {
    readPart(reply, event.get(), interval);
  } while (!reply.complete());
}

void IPCClientImpl::readPart(Reply& reply, void* event, unsigned long interval) {
  const MethodTrace trace(rd, this, "readPart");
  OVERLAPPED overlapped{};
  overlapped.hEvent = event;
  reply.forgetLastRead();
  SetLastError(NO_ERROR);
  if (ReadFile(pipeHandle_, reply.bytes.data(), IPCMessage::MAX_MESSAGE_DATA_LEN, &reply.length, &overlapped)) {
    trace.data(TraceLevel::MODERATE, "Read Data");
  } else {
    const LastError error;
    if (error.number() == ERROR_HANDLE_EOF) {
      trace.data(TraceLevel::MODERATE, "ERROR_HANDLE_EOF");
    } else if (error.number() == ERROR_IO_PENDING) {
      trace.data(TraceLevel::MODERATE, "ERROR_IO_PENDING");
      reply.length = poll(overlapped, interval);
    } else {
      throw trace.failure<NYXException>("KTBNV0064_READ_FAILED", getServiceName(), error.text());
    }
  }
  trace.data(TraceLevel::MODERATE, "Length of data read", reply.length);
  reply.total += reply.length;
  if (reply.length >= kHeader) expectTotal(reply);
  if (!reply.complete()) trace.data(TraceLevel::MODERATE, "There is more data to read");
}

void IPCClientImpl::expectTotal(Reply& reply) const {
  const MethodTrace trace(rd, this, "expectTotal");
  const std::uint32_t textLength = internal::readBigEndian(reply.bytes.data() + kTextLengthOffset);
  reply.expected = kHeader + textLength;
  trace.data(TraceLevel::MODERATE, "Message Text Length", textLength);
  trace.data(TraceLevel::MODERATE, "Total message Length", reply.expected);
}

// In parts, so that a long interval does not hold up a thread whose exchange was cancelled; false when it was.
bool IPCClientImpl::sleep(unsigned long milliseconds) const {
  do {
    const unsigned long part = std::min(milliseconds, kLongestSleep);
    Sleep(part);
    milliseconds -= part;
  } while (milliseconds > 0 && !cancelled_);
  return !cancelled_;
}

// Waits for the read to end, since it writes to its buffer until then.
void IPCClientImpl::cancelRead(_OVERLAPPED& overlapped) const {
  const MethodTrace trace(rd, this, "cancelRead");
  CancelIoEx(pipeHandle_, &overlapped);
  DWORD length = 0;
  GetOverlappedResult(pipeHandle_, &overlapped, &length, TRUE);
  throw trace.failure<NYXException>("KTBNV0064_READ_FAILED", getServiceName(),
                                    LastError(ERROR_OPERATION_ABORTED).text());
}

// Returns only when the read has ended: its buffer must not go before.
unsigned long IPCClientImpl::poll(_OVERLAPPED& overlapped, unsigned long interval) const {
  const MethodTrace trace(rd, this, "poll", interval);
  for (;;) {
    trace.data(TraceLevel::MODERATE, "ERROR_IO_PENDING. Sleep and retry");
    if (!sleep(interval)) cancelRead(overlapped);
    DWORD length = 0;
    if (GetOverlappedResult(pipeHandle_, &overlapped, &length, FALSE)) {
      trace.data(TraceLevel::MODERATE, "Asynchrous read completed");
      ResetEvent(overlapped.hEvent);
      return length;
    }
    const LastError error;
    switch (error.number()) {
      case ERROR_IO_INCOMPLETE:
        trace.data(TraceLevel::MODERATE, "ERROR_IO_INCOMPLETE");
        break;
      case ERROR_HANDLE_EOF:
        trace.data(TraceLevel::MODERATE, "ERROR_HANDLE_EOF");
        return length;
      default:
        trace.data(TraceLevel::MODERATE, "Other Return code", error.text());
        return length;
    }
  }
}

}  // namespace tessel
