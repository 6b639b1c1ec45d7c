#include "internal/jni/AttachScope.h"

#include <tessel/JNIUtils.h>

#include <utility>

#include "internal/KeptOnThread.h"

namespace tessel::internal::jni {
namespace {

void detachFrom(void* vm) noexcept { static_cast<JavaVM*>(vm)->DetachCurrentThread(); }

}  // namespace

AttachScope::AttachScope(JavaVM* vm) : vm_(vm), attached_(JNIUtils::getJNIEnv(vm, env_)) {}

void AttachScope::keep() noexcept {
  if (attached_ && KeptOnThread::keep(detachFrom, vm_)) attached_ = false;
}

void AttachScope::detach() noexcept {
  if (std::exchange(attached_, false)) detachFrom(vm_);
}

}  // namespace tessel::internal::jni
