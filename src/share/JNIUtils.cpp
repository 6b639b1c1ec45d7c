#include <jni.h>

#include <tessel/JNIUtils.h>

#include <tessel/NYXException.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"

namespace tessel {

const RasDescriptor JNIUtils::rd("JNIUtils", internal::kMessages);

JNIUtils::~JNIUtils() = default;

// Only the failures are traced: each record on its way to Java comes here.
bool JNIUtils::getJNIEnv(JavaVM* vm, JNIEnv*& env) {
  env = nullptr;
  if (!vm) {
    const internal::MethodTrace trace(rd, nullptr, "getJNIEnv");
    throw trace.failure<NYXException>("KTBNV0169_INVALID_JVM_POINTER");
  }
  void* found = nullptr;
  if (vm->GetEnv(&found, JNI_VERSION_1_2) == JNI_OK) {
    env = static_cast<JNIEnv*>(found);
    return false;
  }
  if (vm->AttachCurrentThread(&found, nullptr) != JNI_OK) {
    const internal::MethodTrace trace(rd, nullptr, "getJNIEnv");
    throw trace.failure<NYXException>("KTBNV0170_ATTACH_CURRENT_THREAD_FAILED");
  }
  env = static_cast<JNIEnv*>(found);
  return true;
}

}  // namespace tessel
