#include <tessel/VXBifaceImpl.h>

#include <utility>

#include <tessel/NYXException.h>
#include <tessel/NYXUtils.h>

#include "internal/Bundles.h"
#include "internal/LastError.h"
#include "internal/MethodTrace.h"
#include "internal/pc/UniqueHandle.h"

namespace tessel {

using internal::LastError;
using internal::MethodTrace;

const RasDescriptor VXBifaceImpl::rd("VXBifaceImpl", internal::kMessages);

namespace {

// Beside the product, not in it: the middleware is installed next to it. The system adds the extension.
std::string pathOfLibrary(const std::string& productRoot) {
  const std::string separator = NYXUtils::separator();
  return productRoot + separator + ".." + separator + "bin64" + separator + "omni";
}

template <class Function>
Function entryPoint(HMODULE module, const char* name) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the system has one type for all functions
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace

VXBiface* VXBiface::newInstance() { return new VXBifaceImpl; }

VXBifaceImpl::VXBifaceImpl() { const MethodTrace trace(rd, this, "VXBifaceImpl"); }

VXBifaceImpl::~VXBifaceImpl() {
  const MethodTrace trace(rd, this, "~VXBifaceImpl");
  unload();
}

void VXBifaceImpl::initialize(const std::string& productRoot) {
  const MethodTrace trace(rd, this, "initialize", productRoot);
  if (libraryModule_) return;
  if (productRoot.empty()) throw trace.failure<NYXException>("KTBNV0154_PRODUCT_ROOT_EMPTY");
  libraryPath_ = pathOfLibrary(productRoot);
  internal::UniqueModule module(LoadLibraryA(libraryPath_.c_str()));
  const auto failure = [&](const char* key) {
    const LastError error;
    return trace.failure<NYXException>(key, libraryPath_, error.text());
  };
  if (!module) throw failure("KTBNV0151_LOADLIBRARY_ERROR");
  const auto connectTo = entryPoint<ConnectFunction>(module.get(), "ZXCONN");
  if (!connectTo) throw failure("KTBNV0152_GETPROCADDRESS_ZXCONN_ERROR");
  const auto disconnectFrom = entryPoint<DisconnectFunction>(module.get(), "ZXDISC");
  if (!disconnectFrom) throw failure("KTBNV0153_GETPROCADDRESS_ZXDISC_ERROR");
  connectFunction_ = connectTo;
  disconnectFunction_ = disconnectFrom;
  libraryModule_ = module.release();
}

void VXBifaceImpl::connect(const std::string& queueManagerName, long* completionCode, long* reason) {
  const MethodTrace trace(rd, this, "connect", queueManagerName);
  if (!connectFunction_) throw trace.failure<NYXException>("KTBNV0156_ZXCONN_NOT_INITIALIZED");
  connectFunction_(queueManagerName.c_str(), &connectionHandle_, completionCode, reason);
  trace.data(TraceLevel::MODERATE, "completion code and reason", *completionCode, *reason);
}

void VXBifaceImpl::disconnect(long* completionCode, long* reason) {
  const MethodTrace trace(rd, this, "disconnect");
  if (!disconnectFunction_) throw trace.failure<NYXException>("KTBNV0157_ZXDISC_NOT_INITIALIZED");
  disconnectFunction_(&connectionHandle_, completionCode, reason);
  trace.data(TraceLevel::MODERATE, "completion code and reason", *completionCode, *reason);
}

void VXBifaceImpl::cleanup() {
  const MethodTrace trace(rd, this, "cleanup");
  if (unload()) return;
  const LastError error;
  throw trace.failure<NYXException>("KTBNV0158_FREELIBRARY_ERROR", libraryPath_, error.text());
}

// Nothing is left that could be called, even when the system refuses.
bool VXBifaceImpl::unload() noexcept {
  connectFunction_ = nullptr;
  disconnectFunction_ = nullptr;
  internal::UniqueModule module(static_cast<HMODULE>(std::exchange(libraryModule_, nullptr)));
  return module.close();
}

}  // namespace tessel
