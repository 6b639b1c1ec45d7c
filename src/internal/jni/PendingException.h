// Java code may only run, and most functions of the interface may only be called, while no Java exception is pending.
#pragma once

#include <jni.h>

#include "internal/jni/References.h"

namespace tessel::internal::jni {

// Sets a pending exception aside for a scope and makes it pending again at the end.
class PendingException {
 public:
  explicit PendingException(JNIEnv& env) noexcept : env_(env), exception_(env, env.ExceptionOccurred()) {
    if (exception_) env_.ExceptionClear();
  }
  ~PendingException() {
    if (exception_) env_.Throw(exception_.get());
  }
  PendingException(const PendingException&) = delete;
  PendingException& operator=(const PendingException&) = delete;

 private:
  JNIEnv& env_;
  LocalRef<jthrowable> exception_;
};

}  // namespace tessel::internal::jni
