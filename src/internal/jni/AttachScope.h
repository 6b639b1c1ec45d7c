// The calling thread's environment for a scope.
#pragma once

#include <jni.h>

namespace tessel::internal::jni {

// Attaches the thread if need be, and detaches only what it attached itself.
class AttachScope {
 public:
  // Throws what JNIUtils::getJNIEnv throws.
  explicit AttachScope(JavaVM* vm);
  ~AttachScope() { detach(); }
  AttachScope(const AttachScope&) = delete;
  AttachScope& operator=(const AttachScope&) = delete;

  // Not after detach().
  JNIEnv& env() const noexcept { return *env_; }

  // A thread that serves a client stays attached after the scope, until it is about to block.
  void keep() noexcept;

  // Before the end of the scope: a thread must not block while it is attached, since the machine would wait for it.
  void detach() noexcept;

 private:
  JavaVM* vm_;
  JNIEnv* env_ = nullptr;
  bool attached_;
};

}  // namespace tessel::internal::jni
