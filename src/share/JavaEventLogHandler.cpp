#include <jni.h>

#include <tessel/JavaEventLogHandler.h>

#include <array>

#include <tessel/LogRecord.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"
#include "internal/jni/JavaSink.h"

namespace tessel {
namespace {

using internal::jni::JavaSink;
using internal::jni::LocalRef;
using internal::jni::SinkClass;
using internal::jni::SinkMethod;

enum Method : std::size_t { kInfo, kWarning, kError, kConfig };

constexpr const char* kSignature = "(Ljava/lang/String;Ljava/lang/String;)V";

constexpr std::array kMethods{
    SinkMethod{"infoNoFormat", kSignature, "com.kelvo.tessel.ras.EventLog.infoNoFormat method not available"},
    SinkMethod{"warningNoFormat", kSignature, "com.kelvo.tessel.ras.EventLog.warningNoFormat method not available"},
    SinkMethod{"errorNoFormat", kSignature, "com.kelvo.tessel.ras.EventLog.errorNoFormat method not available"},
    SinkMethod{"configNoFormat", kSignature, "com.kelvo.tessel.ras.EventLog.configNoFormat method not available"},
};

constexpr SinkClass kEventLog{"com/kelvo/tessel/ras/EventLog", "com.kelvo.tessel.ras.EventLog class not available",
                              kMethods};

Method methodFor(const JavaSink& sink, const LogRecord& record) {
  const LogLevel& level = record.getLogLevel();
  switch (level.getValue()) {
    case LogLevel::INFO:
      return kInfo;
    case LogLevel::WARNING:
      return kWarning;
    case LogLevel::SEVERE:
      return kError;
    case LogLevel::CONFIG:
      return kConfig;
    default:
      sink.captureUnexpected("unexpected log level", level.toString(), record);
      return kConfig;
  }
}

}  // namespace

const RasDescriptor JavaEventLogHandler::rd("JavaEventLogHandler", internal::kMessages);

JavaEventLogHandler::JavaEventLogHandler(JNIEnv* env) : JavaEventLogHandler(env, LogLevel::CONFIG) {}

JavaEventLogHandler::JavaEventLogHandler(JNIEnv* env, const LogLevel& level) : LogHandler(level) {
  const internal::MethodTrace trace(rd, this, "JavaEventLogHandler", level);
  java_ = std::make_unique<JavaSink>(env, rd, kEventLog);
}

JavaEventLogHandler::~JavaEventLogHandler() = default;

void JavaEventLogHandler::publish(LogRecord& record) {
  if (!(record.getLogLevel() >= getLogLevel())) return;
  java_->publish(record, [&](JavaSink::Publication& java) {
    const Method method = methodFor(*java_, record);
    const LocalRef<jstring> className = java.text(record.getSourceClassName());
    const LocalRef<jstring> message = java.text(record.getMessage());
    java.call(method, className, message);
  });
}

unsigned long JavaEventLogHandler::getFailureCount() const { return java_->failures(); }

}  // namespace tessel
