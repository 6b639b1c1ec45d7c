// The native methods of com.kelvo.tessel.ipc.impl.NativeIPCServer.
#include <jni.h>

#include <memory>
#include <string>
#include <utility>

#include <tessel/IPCClientRunnable.h>
#include <tessel/IPCServer.h>
#include <tessel/JavaCallbackIPCListener.h>

#include "internal/Bundles.h"
#include "internal/LibraryPin.h"
#include "internal/jni/Guard.h"
#include "internal/jni/HandleTable.h"
#include "internal/jni/LogDirectory.h"

namespace tessel {
namespace {

using internal::jni::guarded;
using internal::jni::NativeCall;

const RasDescriptor rd("com.kelvo.tessel.ipc.IPCServer", internal::kMessages);

constexpr internal::jni::ExceptionTable kExceptions{{}, "com/kelvo/tessel/ipc/IPCException"};

// A server and what its threads need; they end in this order, the server first.
struct OpenServer {
  OpenServer(std::string name, std::unique_ptr<JavaCallbackIPCListener> itsListener, std::unique_ptr<IPCServer> server)
      : serviceName(std::move(name)), listener(std::move(itsListener)), object(std::move(server)) {}

  const std::string serviceName;
  const internal::LibraryPin pin;
  const std::unique_ptr<JavaCallbackIPCListener> listener;
  const std::unique_ptr<IPCServer> object;
};

using Servers = internal::jni::HandleTable<IPCServer, OpenServer>;

Servers& servers() {
  static Servers& instance = *new Servers;
  return instance;
}

// On a thread that serves it the server refuses, and nothing has changed for any other thread meanwhile.
bool refuses(jlong handle) {
  const std::shared_ptr<OpenServer> server = servers().find(handle);
  if (!IPCClientRunnable::isServing(server->serviceName)) return false;
  server->object->disconnect();
  return true;
}

// Waits for the requests in progress. A server that cannot be stopped stays open.
void close(jlong handle) {
  if (refuses(handle)) return;
  const std::shared_ptr<OpenServer> server = servers().take(handle);
  try {
    server->object->disconnect();
  } catch (...) {
    servers().add(server);
    throw;
  }
}

}  // namespace
}  // namespace tessel

using namespace tessel;  // NOLINT(google-build-using-namespace): the names below are Java's, not ours

extern "C" {

JNIEXPORT jlong JNICALL Java_com_kelvo_tessel_ipc_impl_NativeIPCServer_initialize(
    JNIEnv* env, jobject object, jstring serviceName, jstring directory, jint maxConnections, jstring adminGroup) {
  return guarded(env, {rd, "initialize", kExceptions}, [&](NativeCall& call) {
    const std::string service = call.text(serviceName, "serviceName");
    const std::string folder = call.ansiText(directory, "directory");
    const std::string group = call.ansiText(adminGroup, "adminGroup");
    internal::jni::offerLogDirectory(folder);
    auto listener = std::make_unique<JavaCallbackIPCListener>(env, object);
    IPCListener& answers = *listener;
    const auto server = std::make_shared<OpenServer>(service, std::move(listener), servers().newObject([&] {
      return IPCServer::newInstance(service, answers, maxConnections, group);
    }));
    server->object->connect();
    return servers().add(server);
  });
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_ipc_impl_NativeIPCServer_shutdown(JNIEnv* env, jobject, jlong handle) {
  guarded(env, {rd, "shutdown", kExceptions}, [&](NativeCall& call) {
    if (handle == 0) {
      call.trace.data(TraceLevel::MODERATE, "shutdown passed NULL nativeId, ignoring");
    } else {
      close(handle);
    }
  });
}

}  // extern "C"
