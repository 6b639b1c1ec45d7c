/// @file
#pragma once

#include <tessel/Export.h>
#include <tessel/JNITypes.h>

namespace tessel {

class RasDescriptor;

/// Access to the Java virtual machine for threads that Java did not start. Static members only; any thread.
class TESSEL_API JNIUtils {
 public:
  JNIUtils() = delete;
  virtual ~JNIUtils();

  /// Gets the calling thread's environment and attaches the thread to the machine if it is not attached yet.
  /// @param env the environment; null when there is none.
  /// @return true when the thread was attached by this call. The caller then detaches it, before the thread blocks or
  ///         ends: the machine waits for attached threads when it is to end.
  /// @throws NYXException KTBNV0169 when `vm` is null, KTBNV0170 when the thread cannot be attached.
  static bool getJNIEnv(JavaVM* vm, JNIEnv*& env);

 private:
  static const RasDescriptor rd;
};

}  // namespace tessel
