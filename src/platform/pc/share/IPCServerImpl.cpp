#include <tessel/IPCServerImpl.h>

#include <ostream>

#include <tessel/FFDC.h>
#include <tessel/IPCClientConnectionListener.h>
#include <tessel/IPCClientRunnable.h>
#include <tessel/NYXException.h>
#include <tessel/NYXThreadImpl.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"

namespace tessel {

using internal::MethodTrace;

const RasDescriptor IPCServerImpl::rd("IPCServerImpl", internal::kMessages);

namespace {

constexpr long kLook = 10000;               // ms between two looks whether the listener thread still lives
constexpr unsigned long kCancelAgain = 10;  // ms between two tries to cancel a blocked accept

}  // namespace

IPCServer* IPCServer::newInstance(const std::string& name, IPCListener& listener, int maxConnections,
                                  const std::string& adminGroupName) {
  return new IPCServerImpl(name, listener, maxConnections, adminGroupName);
}

IPCServer* IPCServer::newInstance(const std::string& name, IPCListener& listener, int maxConnections) {
  return newInstance(name, listener, maxConnections, std::string());
}

IPCServerImpl::IPCServerImpl(const std::string& name, IPCListener& listener, int maxConnections,
                             const std::string& adminGroupName)
    : IPCServer(name, listener, maxConnections, adminGroupName) {
  const MethodTrace trace(rd, this, "IPCServerImpl", name, maxConnections, adminGroupName);
}

IPCServerImpl::~IPCServerImpl() {
  const MethodTrace trace(rd, this, "~IPCServerImpl");
  if (listenerThread_) discard("~IPCServerImpl");
}

void IPCServerImpl::connect() {
  const MethodTrace trace(rd, this, "connect", *this);
  if (listenerThread_) {
    const auto failure = trace.failure<NYXException>("KTBNV0065_ALREADY_CONNECTED");
    FFDC::capture(rd, "connect", FFDC::PROBE_001(), &failure);
    throw failure;
  }
  try {
    startListening();
  } catch (const NYXException& exception) {
    discard("connect");
    throw NYXException(exception);
  }
}

void IPCServerImpl::startListening() {
  const MethodTrace trace(rd, this, "startListening");
  connectionListener_ = std::make_unique<IPCClientConnectionListener>(getServiceName(), getListener(),
                                                                      getMaxConnections(), std::string());
  listenerThread_ = std::make_unique<NYXThreadImpl>(connectionListener_.get());
  listenerThread_->start();
  started_ = true;
  while (listenerThread_->isAlive() && !connectionListener_->waitRunning(kLook)) {
    // A thread that gave up is on its way out.
    if (connectionListener_->hasEnded()) listenerThread_->join();
  }
  if (listenerThread_->isAlive()) return;
  const std::string message = connectionListener_->getErrorMessage();
  trace.data(TraceLevel::MODERATE, "clientConnectionListenerThread dead", message);
  if (!message.empty()) throw trace.thrown(NYXException(message));
}

// What started must end before it is deleted. A thread that cannot be waited for keeps its objects.
void IPCServerImpl::discard(const char* method) noexcept {
  try {
    if (started_) disconnectUnlessServing();
    listenerThread_.reset();
    connectionListener_.reset();
  } catch (const NYXException& exception) {
    FFDC::capture(rd, method, FFDC::PROBE_003(), &exception);
    static_cast<void>(listenerThread_.release());
    static_cast<void>(connectionListener_.release());
  }
  started_ = false;
}

// The probe's method text is the one that service staff look for.
void IPCServerImpl::disconnect() {
  const MethodTrace trace(rd, this, "disconnect", *this);
  if (!listenerThread_) {
    const auto failure = trace.failure<NYXException>("KTBNV0062_NOT_CONNECTED");
    FFDC::capture(rd, "connect", FFDC::PROBE_002(), &failure);
    throw failure;
  }
  disconnectUnlessServing();
}

// A worker that waited for all workers would wait for itself: a programming error, so its text is not translated.
void IPCServerImpl::disconnectUnlessServing() {
  const MethodTrace trace(rd, this, "disconnectUnlessServing");
  if (IPCClientRunnable::isServing(getServiceName())) {
    throw trace.thrown(NYXException("IPCServerImpl::disconnect called from within onMessage"));
  }
  endListening();
}

// Nothing is deleted while its thread lives.
void IPCServerImpl::endListening() {
  const MethodTrace trace(rd, this, "endListening");
  if (!connectionListener_->shutdown()) {
    while (!connectionListener_->hasEnded() && !listenerThread_->joinFor(kCancelAgain)) {
      listenerThread_->cancelBlockedCall();
    }
  }
  listenerThread_->join();
  started_ = false;
  listenerThread_.reset();
  connectionListener_.reset();
}

std::ostream& operator<<(std::ostream& stream, const IPCServerImpl& server) {
  return stream << "IPCServer serviceName:" << server.getServiceName()
                << " maxConnections:" << server.getMaxConnections() << " adminGroupName:" << server.getAdminGroupName()
                << " connected:" << (server.listenerThread_ ? "true" : "false");
}

}  // namespace tessel
