// A Java virtual machine that is of no use.
#pragma once

#include <jni.h>

namespace tessel::test {

// Knows no thread and accepts none.
struct ClosedMachine : JavaVM_ {
  ClosedMachine() {
    functions = &table;
    table.GetEnv = [](JavaVM*, void**, jint version) -> jint {
      return version == 0x10002 ? JNI_EDETACHED : JNI_EVERSION;
    };
    table.AttachCurrentThread = [](JavaVM*, void** env, void* arguments) -> jint {
      *env = &closed;
      return arguments ? JNI_EINVAL : JNI_ENOMEM;
    };
  }

  JNIInvokeInterface_ table{};
  static inline int closed = 0;
};

}  // namespace tessel::test
