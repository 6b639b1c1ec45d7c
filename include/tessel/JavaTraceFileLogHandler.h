/// @file
#pragma once

#include <memory>

#include <tessel/Export.h>
#include <tessel/JNITypes.h>
#include <tessel/LogHandler.h>

namespace tessel {

class RasDescriptor;

namespace internal::jni {
class JavaSink;
}

/// Forwards trace records to the Java class com.kelvo.tessel.ras.Trace: nativeMethodEntry, the two forms of
/// nativeMethodExit, nativeMethodData and nativeMethodThrowing get the names of class and method, the latter followed
/// by "(Native Method)", the object's address and what the record holds besides. Other records are ignored.
///
/// Threads, exceptions and failures are treated as by JavaEventLogHandler.
class TESSEL_API JavaTraceFileLogHandler : public LogHandler {
 public:
  /// Takes records from FINEST up. @param env as for JavaEventLogHandler.
  explicit JavaTraceFileLogHandler(JNIEnv* env);
  /// @param level the least severe level that is forwarded.
  JavaTraceFileLogHandler(JNIEnv* env, const LogLevel& level);
  ~JavaTraceFileLogHandler() override;

  /// A record of an unknown type is captured and dropped.
  void publish(LogRecord& record) override;

  /// @return how many calls of Java have failed so far.
  unsigned long getFailureCount() const;

 private:
  static const RasDescriptor rd;

  std::unique_ptr<internal::jni::JavaSink> java_;  // set by the constructor only
};

}  // namespace tessel
