#include <tessel/IPCClientConnectionListener.h>

#include <algorithm>
#include <exception>

#include <tessel/EventLog.h>
#include <tessel/FFDC.h>
#include <tessel/IPCClientImpl.h>
#include <tessel/IPCClientRunnable.h>
#include <tessel/IPCMessage.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/Synchronize.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/pc/PipeName.h"
#include "internal/pc/UniqueHandle.h"
#include "platform/pc/share/SecurityData.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;

const RasDescriptor IPCClientConnectionListener::rd("IPCClientConnectionListener", internal::kMessages);

namespace {

constexpr unsigned long kWakeUpWait = 100;        // ms: the wake-up client waits no longer for a busy pipe
constexpr unsigned kFailuresBeforePause = 3;      // failing accepts in a row
constexpr long kPause = 100;                      // ms, ended by a stop
constexpr unsigned long kLeaveWait = 50;          // ms for a worker whose client has left
constexpr unsigned long kNoticeWait = 10;         // ms for a worker to notice that its client has left
constexpr unsigned long long kWriteGrace = 2000;  // ms for a client that does not read its reply
constexpr unsigned long long kReadGrace = 5000;   // ms for a cancelled read to end

}  // namespace

// One instance of the pipe.
struct IPCClientConnectionListener::Instance {
  internal::UniqueHandle handle;

  void disconnect() const {
    if (handle) DisconnectNamedPipe(handle.get());
  }
};

// A connected client.
struct IPCClientConnectionListener::Worker {
  Instance instance;
  IPCClientRunnable runnable;
  NYXThreadImpl thread;
  bool terminated = false;
  ULONGLONG replyingSince = 0;  // as a stop has seen it; 0 when it has not

  Worker(const std::string& serviceName, HANDLE pipe, IPCListener& listener)
      : runnable(serviceName, pipe, listener), thread(&runnable) {}

  // Only after the thread has ended: a pipe must not be touched while a thread is blocked in its read.
  void closePipe() {
    instance.disconnect();
    instance.handle.reset();
  }

  // Cancels the read that the thread is blocked in, or the reply that its client has not taken for the time of grace:
  // a reply that comes late, out of a long request, has that time too. Returns whether the thread is in its read.
  bool cancelBlocked() {
    using Activity = IPCClientRunnable::Activity;
    if (runnable.cancelAt(Activity::reading, thread)) return true;
    if (runnable.getActivity() == Activity::processing) return false;
    const ULONGLONG now = GetTickCount64();
    if (replyingSince == 0) replyingSince = now;
    if (now - replyingSince < kWriteGrace) return false;
    runnable.cancelAt(Activity::writing, thread);
    runnable.cancelAt(Activity::leaving, thread);
    return false;
  }

  // A thread that cannot be asked counts as alive.
  bool hasEnded() noexcept {
    try {
      return thread.joinFor(0);
    } catch (const NYXException&) {
      return false;
    }
  }
};

IPCClientConnectionListener::IPCClientConnectionListener(const std::string& name, IPCListener& listener,
                                                         int maxConnections, const std::string& adminGroupName)
    : serviceName_(name), listener_(&listener), maxConnections_(maxConnections), sync_(new NYXThreadSyncImpl) {
  const MethodTrace trace(rd, this, "IPCClientConnectionListener", name, maxConnections, adminGroupName);
  setRunning(false);
}

IPCClientConnectionListener::IPCClientConnectionListener(const IPCClientConnectionListener& other)
    : NYXRunnable(other),
      serviceName_(other.serviceName_),
      listener_(other.listener_),
      maxConnections_(other.maxConnections_),
      sync_(new NYXThreadSyncImpl) {}

IPCClientConnectionListener& IPCClientConnectionListener::operator=(const IPCClientConnectionListener& other) {
  if (this == &other) return *this;
  serviceName_ = other.serviceName_;
  maxConnections_ = other.maxConnections_;
  errorMessage_.clear();
  sync_ = std::make_unique<NYXThreadSyncImpl>();
  running_ = false;
  ended_ = false;
  shutdownRequested_ = false;
  return *this;
}

IPCClientConnectionListener::~IPCClientConnectionListener() {
  const MethodTrace trace(rd, this, "~IPCClientConnectionListener");
  shutdown();
}

bool IPCClientConnectionListener::shutdown() {
  MethodTrace trace(rd, this, "shutdown");
  setShutdownRequested(true);
  if (!isRunning()) return trace.result(true);
  IPCClientImpl client(serviceName_, NativeProperties());
  client.setBusyWait(kWakeUpWait);
  try {
    client.connect();
    client.disconnect();
    return trace.result(true);
  } catch (const NYXException& exception) {
    // A client that took the last instance woke the listener just as well.
    if (hasEnded()) return trace.result(true);
    FFDC::capture(rd, "shutdown", FFDC::PROBE_001(), &exception);
    return trace.result(false);
  }
}

long IPCClientConnectionListener::run() {
  MethodTrace trace(rd, this, "run", serviceName_);
  // However the loop ends, no worker outlives it.
  struct End {
    IPCClientConnectionListener& listener;
    const MethodTrace& trace;
    ~End() {
      trace.data(TraceLevel::MODERATE, "Ended. Removing all currently connected client threads");
      listener.setEnded();
      listener.stopWorkers();
      listener.setRunning(false);
    }
  };
  const End end{*this, trace};
  try {
    return trace.result(listen());
  } catch (const NYXException& exception) {
    errorMessage_ = exception.getMessage();
    throw;
  } catch (const std::exception& exception) {
    errorMessage_ = exception.what();
    throw trace.thrown(NYXException(exception.what()));
  }
}

long IPCClientConnectionListener::listen() {
  const MethodTrace trace(rd, this, "listen");
  SecurityData security;
  if (!security.setSecurityAttributes()) {
    errorMessage_ = NLS::format(rd, "KTBNV0114_SECURITY_SETUP_FAILED", serviceName_, security.error().text());
    trace.data(TraceLevel::MODERATE, errorMessage_);
    return static_cast<long>(security.error().number());
  }
  return serveInstances(security.getSecurityAttributes());
}

long IPCClientConnectionListener::serveInstances(void* securityAttributes) {
  const MethodTrace trace(rd, this, "serveInstances");
  long error = NO_ERROR;
  unsigned failures = 0;
  for (bool first = true; error == NO_ERROR && !isShutdownRequested(); first = false) {
    std::unique_ptr<Instance> instance = createInstance(securityAttributes, first, error);
    if (first && error != NO_ERROR) break;
    dropped_.reset();
    setRunning(true);
    // Asked again: a stop that came before the line above found nothing to wake.
    if (!isShutdownRequested()) serveClient(*instance, failures);
    if (isShutdownRequested() && instance->handle) lastInstance_ = std::move(instance);
  }
  return error;
}

// The first failure is the caller's of connect, a later one the operator's.
std::unique_ptr<IPCClientConnectionListener::Instance> IPCClientConnectionListener::createInstance(
    void* securityAttributes, bool first, long& error) {
  const MethodTrace trace(rd, this, "createInstance", first);
  auto instance = std::make_unique<Instance>();
  instance->handle = internal::UniqueHandle(CreateNamedPipeA(
      internal::pipePath(serviceName_).c_str(), PIPE_ACCESS_DUPLEX | (first ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0),
      PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, PIPE_UNLIMITED_INSTANCES, internal::kPipeSize,
      internal::kPipeSize, 0, static_cast<SECURITY_ATTRIBUTES*>(securityAttributes)));
  if (instance->handle) return instance;
  const LastError failure;
  error = static_cast<long>(failure.number());
  const std::string message = NLS::format(rd, "KTBNV0087_CREATE_NAMED_PIPE_FAILED", serviceName_, failure.text());
  trace.data(TraceLevel::MODERATE, message);
  if (first) {
    errorMessage_ = message;
  } else {
    EventLog::errorNoFormat(rd, message);
  }
  return instance;
}

// Takes the handle out of the instance unless a stop came while it was waited for.
void IPCClientConnectionListener::serveClient(Instance& instance, unsigned& failures) {
  const MethodTrace trace(rd, this, "serveClient");
  trace.data(TraceLevel::MODERATE, "Waiting for a client to connect");
  unsigned long error = NO_ERROR;
  const bool accepted = accept(instance, error);
  if (isShutdownRequested()) return;
  failures = accepted ? 0 : failures + 1;
  if (!accepted) {
    reapFinishedWorkers();
    reject(std::move(instance),
           NLS::format(rd, "KTBNV0089_CONNECT_NAMED_PIPE_FAILED", serviceName_, LastError(error).text()));
    pauseAfterFailures(failures);
  } else if (!makeRoom()) {
    reject(std::move(instance),
           NLS::format(rd, "KTBNV0090_MAX_CONNECTIONS_EXCEEDED", serviceName_, std::to_string(maxConnections_)));
  } else {
    trace.data(TraceLevel::MODERATE, "Client connected, creating a processing thread.");
    startWorker(std::move(instance));
  }
}

bool IPCClientConnectionListener::accept(const Instance& instance, unsigned long& error) const {
  if (ConnectNamedPipe(instance.handle.getOrInvalid(), nullptr)) return true;
  error = LastError().number();
  return error == ERROR_PIPE_CONNECTED;
}

// The instance is closed only when the next one exists, so that the pipe's name is never free.
void IPCClientConnectionListener::reject(Instance instance, const std::string& message) {
  EventLog::errorNoFormat(rd, message);
  instance.disconnect();
  dropped_ = std::make_unique<Instance>(std::move(instance));
}

bool IPCClientConnectionListener::isFull() const {
  return maxConnections_ >= 0 && clientThreads_.size() >= static_cast<std::size_t>(maxConnections_);
}

// A client that leaves and comes back at once must not be refused for its own dying worker: workers that have left
// their read for good are waited for, and each gets a few milliseconds to notice that its client has left.
bool IPCClientConnectionListener::makeRoom() {
  reapFinishedWorkers();
  const ULONGLONG start = GetTickCount64();
  while (isFull() && maxConnections_ > 0 && !isShutdownRequested()) {
    if (GetTickCount64() - start >= (hasLeavingWorker() ? kLeaveWait : kNoticeWait)) break;
    Sleep(1);
    reapFinishedWorkers();
  }
  return !isFull();
}

bool IPCClientConnectionListener::hasLeavingWorker() const {
  return std::any_of(clientThreads_.begin(), clientThreads_.end(), [](const std::unique_ptr<Worker>& worker) {
    return worker->runnable.getActivity() == IPCClientRunnable::Activity::leaving;
  });
}

void IPCClientConnectionListener::reapFinishedWorkers() {
  clientThreads_.remove_if([](const std::unique_ptr<Worker>& worker) {
    if (!worker->hasEnded()) return false;
    worker->closePipe();
    return true;
  });
}

void IPCClientConnectionListener::startWorker(Instance instance) {
  try {
    clientThreads_.push_back(std::make_unique<Worker>(serviceName_, instance.handle.get(), *listener_));
    clientThreads_.back()->thread.start();
    clientThreads_.back()->instance = std::move(instance);
  } catch (const NYXException& exception) {
    const bool listed =
        !clientThreads_.empty() && clientThreads_.back()->runnable.getPipeHandle() == instance.handle.get();
    if (listed) clientThreads_.pop_back();
    reject(std::move(instance), NLS::format(rd, "KTBNV0088_THREAD_START_FAILED", serviceName_, exception.getMessage()));
  }
}

void IPCClientConnectionListener::pauseAfterFailures(unsigned failures) {
  if (failures < kFailuresBeforePause) return;
  const Synchronize guard(sync_.get());
  if (!shutdownRequested_) sync_->wait(kPause);
}

namespace {

// A failure to stop or wait for a thread is captured: the workers after it are stopped all the same.
template <class Action>
bool succeeds(const RasDescriptor& rd, Action action) noexcept {
  try {
    action();
    return true;
  } catch (const NYXException& exception) {
    FFDC::capture(rd, "stopWorkers", FFDC::PROBE_002(), &exception);
    return false;
  }
}

}  // namespace

// A thread is terminated only when its cancelled read does not end: killed inside the heap or a trace point it
// would freeze the process.
void IPCClientConnectionListener::stopWorkers() {
  const MethodTrace trace(rd, this, "stopWorkers");
  for (const auto& worker : clientThreads_) worker->runnable.shutdown();
  const ULONGLONG start = GetTickCount64();
  while (!clientThreads_.empty()) {
    const ULONGLONG waited = GetTickCount64() - start;
    for (const auto& worker : clientThreads_) {
      if (worker->terminated || !worker->cancelBlocked() || waited < kReadGrace) continue;
      worker->terminated = true;
      succeeds(rd, [&] { worker->thread.stop(); });
    }
    if (!succeeds(rd, [&] { clientThreads_.front()->thread.joinFor(1); })) {
      // What its thread may still use is never freed.
      static_cast<void>(clientThreads_.front().release());
      clientThreads_.pop_front();
    }
    reapFinishedWorkers();
  }
}

bool IPCClientConnectionListener::waitRunning(long timeoutMillis) const {
  MethodTrace trace(rd, this, "waitRunning", timeoutMillis);
  const Synchronize guard(sync_.get());
  if (!running_ && !ended_) sync_->wait(timeoutMillis);
  return trace.result(running_);
}

std::string IPCClientConnectionListener::getErrorMessage() const {
  MethodTrace trace(rd, this, "getErrorMessage");
  return trace.result(errorMessage_);
}

bool IPCClientConnectionListener::hasEnded() const {
  const Synchronize guard(sync_.get());
  return ended_;
}

bool IPCClientConnectionListener::isRunning() const {
  const Synchronize guard(sync_.get());
  return running_;
}

void IPCClientConnectionListener::setRunning(bool running) {
  const Synchronize guard(sync_.get());
  running_ = running;
  notify();
}

bool IPCClientConnectionListener::isShutdownRequested() const {
  const Synchronize guard(sync_.get());
  return shutdownRequested_;
}

void IPCClientConnectionListener::setShutdownRequested(bool requested) {
  const Synchronize guard(sync_.get());
  shutdownRequested_ = requested;
  notify();
}

void IPCClientConnectionListener::setEnded() {
  const Synchronize guard(sync_.get());
  ended_ = true;
  notify();
}

// The state is written already: who waits looks again at its time-out when it cannot be woken.
void IPCClientConnectionListener::notify() noexcept {
  try {
    sync_->notifyAll();
  } catch (const NYXException& exception) {
    FFDC::capture(rd, "notify", FFDC::PROBE_003(), &exception);
  }
}

}  // namespace tessel
