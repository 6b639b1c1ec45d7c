// The bytes of messages on their way from and to Java.
#pragma once

#include <jni.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "internal/jni/References.h"

namespace tessel::internal::jni {

// The array's first bytes, so many at most.
inline std::string bytesOf(JNIEnv& env, jbyteArray array, std::size_t most) {
  const jsize length = std::min(env.GetArrayLength(array), static_cast<jsize>(most));
  std::string bytes(static_cast<std::size_t>(length), '\0');
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): Java's bytes are signed
  env.GetByteArrayRegion(array, 0, length, reinterpret_cast<jbyte*>(bytes.data()));
  return bytes;
}

// Empty, and a Java exception is pending, when the machine has no memory for it.
inline LocalRef<jbyteArray> newByteArray(JNIEnv& env, std::string_view bytes) {
  const auto length = static_cast<jsize>(bytes.size());
  LocalRef<jbyteArray> array(env, env.NewByteArray(length));
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): Java's bytes are signed
  if (array) env.SetByteArrayRegion(array.get(), 0, length, reinterpret_cast<const jbyte*>(bytes.data()));
  return array;
}

}  // namespace tessel::internal::jni
