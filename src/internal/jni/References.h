// Owners of references to Java objects.
#pragma once

#include <jni.h>

#include <type_traits>
#include <utility>

#include "internal/jni/AttachScope.h"

namespace tessel::internal::jni {

// A local reference that ends with its scope instead of with the native method: a thread that never returns to Java
// would collect them. Belongs to one thread. May be empty. A Java exception may be pending when it ends.
template <class T>
class LocalRef {
  static_assert(std::is_convertible_v<T, jobject>);

 public:
  LocalRef(JNIEnv& env, T reference) noexcept : env_(&env), reference_(reference) {}
  LocalRef(LocalRef&& other) noexcept : env_(other.env_), reference_(other.release()) {}
  LocalRef(const LocalRef&) = delete;
  LocalRef& operator=(const LocalRef&) = delete;
  LocalRef& operator=(LocalRef&&) = delete;
  ~LocalRef() {
    if (reference_) env_->DeleteLocalRef(reference_);
  }

  explicit operator bool() const noexcept { return reference_ != nullptr; }
  T get() const noexcept { return reference_; }
  // To hand the reference to Java as the result of a native method.
  T release() noexcept { return std::exchange(reference_, nullptr); }

 private:
  JNIEnv* env_;
  T reference_;
};

// A reference that any thread may use; it ends on whichever thread, attached for that if need be. May be empty.
template <class T>
class GlobalRef {
  static_assert(std::is_convertible_v<T, jobject>);

 public:
  GlobalRef() noexcept = default;
  // Empty when the machine has no memory for it.
  GlobalRef(JNIEnv& env, T reference) noexcept {
    if (env.GetJavaVM(&vm_) == JNI_OK) reference_ = static_cast<T>(env.NewGlobalRef(reference));
  }
  GlobalRef(GlobalRef&& other) noexcept : vm_(other.vm_), reference_(std::exchange(other.reference_, nullptr)) {}
  GlobalRef& operator=(GlobalRef&& other) noexcept {
    std::swap(vm_, other.vm_);
    std::swap(reference_, other.reference_);
    return *this;
  }
  GlobalRef(const GlobalRef&) = delete;
  GlobalRef& operator=(const GlobalRef&) = delete;
  ~GlobalRef() {
    if (!reference_) return;
    try {
      AttachScope(vm_).env().DeleteGlobalRef(reference_);
    } catch (...) {  // NOLINT(bugprone-empty-catch): the machine is gone, and the reference with it
    }
  }

  explicit operator bool() const noexcept { return reference_ != nullptr; }
  T get() const noexcept { return reference_; }

 private:
  JavaVM* vm_ = nullptr;
  T reference_ = nullptr;
};

}  // namespace tessel::internal::jni
