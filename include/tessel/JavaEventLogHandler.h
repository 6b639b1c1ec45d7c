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

/// Forwards events to the Java class com.kelvo.tessel.ras.EventLog: the name of the source class and the text go to
/// infoNoFormat, warningNoFormat, errorNoFormat or configNoFormat.
///
/// A thread that is not attached to the machine is attached for the length of the call. A Java exception that is
/// pending is pending again afterwards, and no other one is left behind. What fails becomes a failure capture and the
/// record is dropped: a missing class or method is captured by the constructor, an exception out of a method, which
/// is described on standard error each time, only when it is the first of that method.
class TESSEL_API JavaEventLogHandler : public LogHandler {
 public:
  /// Takes records from CONFIG up. @param env of the calling thread; it also tells the machine, and the calling
  ///        Java code's class loader finds the class.
  explicit JavaEventLogHandler(JNIEnv* env);
  /// @param level the least severe level that is forwarded.
  JavaEventLogHandler(JNIEnv* env, const LogLevel& level);
  ~JavaEventLogHandler() override;

  /// A level that is none of the four is captured, and the record goes to configNoFormat.
  void publish(LogRecord& record) override;

  /// @return how many calls of Java have failed so far.
  unsigned long getFailureCount() const;

 private:
  static const RasDescriptor rd;

  std::unique_ptr<internal::jni::JavaSink> java_;  // set by the constructor only
};

}  // namespace tessel
