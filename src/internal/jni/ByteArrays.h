// The bytes of messages on their way from and to Java.
#pragma once

#include <jni.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "internal/jni/References.h"

namespace tessel::internal::jni {

// Reads the array's first bytes, so many at most. Returns false, and a Java exception is pending, when it cannot.
[[nodiscard]] inline bool readBytes(JNIEnv& env, jbyteArray array, std::size_t most, std::string& bytes) {
  const jsize length = std::min(env.GetArrayLength(array), static_cast<jsize>(most));
  bytes.resize(static_cast<std::size_t>(length));
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): Java's bytes are signed
  env.GetByteArrayRegion(array, 0, length, reinterpret_cast<jbyte*>(bytes.data()));
  return !env.ExceptionCheck();
}

// Empty, and as a rule a Java exception is pending, when the machine has no memory for it.
inline LocalRef<jbyteArray> newByteArray(JNIEnv& env, std::string_view bytes) {
  const auto length = static_cast<jsize>(bytes.size());
  LocalRef<jbyteArray> array(env, env.NewByteArray(length));
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): Java's bytes are signed
  if (array) env.SetByteArrayRegion(array.get(), 0, length, reinterpret_cast<const jbyte*>(bytes.data()));
  return env.ExceptionCheck() ? LocalRef<jbyteArray>(env, nullptr) : std::move(array);
}

}  // namespace tessel::internal::jni
