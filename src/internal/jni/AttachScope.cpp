#include "internal/jni/AttachScope.h"

#include <tessel/JNIUtils.h>

#include <utility>

namespace tessel::internal::jni {

AttachScope::AttachScope(JavaVM* vm) : vm_(vm), attached_(JNIUtils::getJNIEnv(vm, env_)) {}

void AttachScope::detach() noexcept {
  if (std::exchange(attached_, false)) vm_->DetachCurrentThread();
}

}  // namespace tessel::internal::jni
