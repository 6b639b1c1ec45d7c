#include <jni.h>

#include <tessel/JavaCallbackIPCListener.h>

#include <new>

#include <tessel/JNIEnvWrapper.h>
#include <tessel/NYXException.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"
#include "internal/jni/AttachScope.h"
#include "internal/jni/ByteArrays.h"

namespace tessel {

using internal::MethodTrace;
using internal::jni::AttachScope;
using internal::jni::LocalRef;

const RasDescriptor JavaCallbackIPCListener::rd("JavaCallbackIPCListener", internal::kMessages);

namespace {

constexpr const char* kMethod = "byte [] com.kelvo.tessel.ipc.IPCServer.onMessage(byte [])";

AttachScope attach(JavaVM* vm, const MethodTrace& trace) {
  try {
    return AttachScope(vm);
  } catch (const NYXException&) {
    trace.data(TraceLevel::MODERATE, "JNI environment not available");
    throw;
  }
}

// False when Java has thrown, or there is no memory for the request or the reply.
bool ask(JNIEnv& env, jobject server, jmethodID method, const std::string& request, std::string& reply) try {
  const LocalRef<jbyteArray> text = internal::jni::newByteArray(env, request);
  if (!text) return false;
  const jobject returned = JNIEnvWrapper(&env).CallObjectMethod(server, method, text.get());
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-static-cast-downcast): the method was found by its signature
  const LocalRef<jbyteArray> answer(env, static_cast<jbyteArray>(returned));
  if (env.ExceptionCheck()) return false;
  return !answer || internal::jni::readBytes(env, answer.get(), IPCMessage::MAX_MESSAGE_TEXT_LEN, reply);
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace

JavaCallbackIPCListener::JavaCallbackIPCListener(JNIEnv* env, jobject server) {
  const MethodTrace trace(rd, this, "JavaCallbackIPCListener");
  const JNIEnvWrapper java(env);
  if (java.GetJavaVM(&vm_) != JNI_OK) {
    trace.data(TraceLevel::MODERATE, "GetJavaVM failed");
    throw trace.failure<NYXException>("KTBNV0169_INVALID_JVM_POINTER");
  }
  const LocalRef<jclass> clazz(*env, java.GetObjectClass(server));
  if (clazz) onMessage_ = java.GetMethodID(clazz.get(), "onMessage", "([B)[B");
  if (!onMessage_) {
    java.ExceptionClear();
    throw trace.failure<NYXException>("KTBNV0069_UNKNOWN_JAVA_METHOD", kMethod);
  }
  server_ = java.NewGlobalRef(server);
  if (!server_) throw std::bad_alloc();
}

JavaCallbackIPCListener::~JavaCallbackIPCListener() {
  const MethodTrace trace(rd, this, "~JavaCallbackIPCListener");
  try {
    AttachScope(vm_).env().DeleteGlobalRef(server_);
  } catch (...) {  // NOLINT(bugprone-empty-catch): the machine is gone, and the reference with it
  }
}

// The thread is detached again before it waits for its client: the machine would wait for it when it is to end. It
// stays attached while requests follow each other closely, since attaching and detaching take longer than an exchange.
IPCMessage JavaCallbackIPCListener::onMessage(const IPCMessage& request) {
  MethodTrace trace(rd, this, "onMessage", request);
  const auto reply = [&](long status, const std::string& text) {
    return trace.result(IPCMessage(request.getMessageId(), status, text));
  };
  try {
    AttachScope scope = attach(vm_, trace);
    scope.keep();
    return reply(IPCMessage::STATUS_SUCCESS, call(scope.env(), request.getMessageText()));
  } catch (const NYXException& exception) {
    return reply(IPCMessage::STATUS_EXCEPTION, exception.getMessage());
  }
}

std::string JavaCallbackIPCListener::call(JNIEnv& env, const std::string& request) const {
  const MethodTrace trace(rd, this, "call");
  std::string reply;
  if (ask(env, server_, onMessage_, request, reply)) return reply;
  trace.data(TraceLevel::MODERATE, "Exception caught invoking Java callback. See system err for Java stack trace.");
  env.ExceptionDescribe();
  env.ExceptionClear();
  throw trace.failure<NYXException>("KTBNV0070_JAVA_EXCEPTION_THROWN");
}

}  // namespace tessel
