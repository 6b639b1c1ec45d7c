/// @file
#pragma once

#include <string>

#include <tessel/IPCListener.h>
#include <tessel/JNITypes.h>

namespace tessel {

class RasDescriptor;

/// Has the requests of an IPCServer answered by a Java object.
///
/// The object sees message texts only; ids and statuses stay between the native ends.
class TESSEL_API JavaCallbackIPCListener : public IPCListener {
 public:
  /// @param env the calling thread's environment. @param server the Java object; kept by a global reference.
  /// @throws NYXException KTBNV0069 when the object has no method `byte[] onMessage(byte[])`; any other when the
  ///         machine gives no reference.
  JavaCallbackIPCListener(JNIEnv* env, jobject server);
  JavaCallbackIPCListener(const JavaCallbackIPCListener& other) = delete;
  JavaCallbackIPCListener& operator=(const JavaCallbackIPCListener& other) = delete;
  /// Gives the reference back, on any thread.
  ~JavaCallbackIPCListener() override;

  /// Calls the Java object on the calling thread, which is attached to the machine for the time of the call.
  ///
  /// @return the bytes that the object returned, the first 1024 of them, none when it returned null; a reply with
  ///         status 1 and the text of KTBNV0070 when it threw, whose stack trace is then on standard error, or that of
  ///         KTBNV0169 or KTBNV0170 when the thread cannot call Java.
  IPCMessage onMessage(const IPCMessage& request) override;

 private:
  std::string call(JNIEnv& env, const std::string& request) const;

  static const RasDescriptor rd;

  JavaVM* vm_ = nullptr;
  jobject server_ = nullptr;
  jmethodID onMessage_ = nullptr;
};

}  // namespace tessel
