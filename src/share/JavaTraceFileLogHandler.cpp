#include <jni.h>

#include <tessel/JavaTraceFileLogHandler.h>

#include <array>
#include <cstdint>

#include <tessel/LogRecord.h>
#include <tessel/NYXException.h>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"
#include "internal/jni/JavaSink.h"

namespace tessel {
namespace {

using internal::jni::JavaSink;
using internal::jni::LocalRef;
using internal::jni::SinkClass;
using internal::jni::SinkMethod;

enum Method : std::size_t { kEntry, kExitWithReturn, kExit, kData, kThrowing };

constexpr std::array kMethods{
    SinkMethod{"nativeMethodEntry", "(Ljava/lang/String;JLjava/lang/String;[Ljava/lang/String;)V",
               "com.kelvo.tessel.ras.Trace.entry method not available"},
    SinkMethod{"nativeMethodExit", "(Ljava/lang/String;JLjava/lang/String;Ljava/lang/String;)V",
               "com.kelvo.tessel.ras.Trace.exit method not available"},
    SinkMethod{"nativeMethodExit", "(Ljava/lang/String;JLjava/lang/String;)V",
               "com.kelvo.tessel.ras.Trace.exit (with no return) method not available"},
    SinkMethod{"nativeMethodData", "(Ljava/lang/String;Ljava/lang/String;JLjava/lang/String;[Ljava/lang/String;)V",
               "com.kelvo.tessel.ras.Trace.data method not available"},
    SinkMethod{"nativeMethodThrowing", "(Ljava/lang/String;JLjava/lang/String;Ljava/lang/String;)V",
               "com.kelvo.tessel.ras.Trace.throwing method not available"},
};

constexpr SinkClass kTrace{"com/kelvo/tessel/ras/Trace", "com.kelvo.tessel.ras.Trace class not available", kMethods};

jlong addressOf(const void* object) {
  return static_cast<jlong>(reinterpret_cast<std::intptr_t>(object));  // NOLINT(*-reinterpret-cast): shown as a number
}

std::string thrownText(const LogRecord& record) {
  return record.getThrown() ? record.getThrown()->toString() : "Unknown Throwable";
}

void forward(const JavaSink& sink, JavaSink::Publication& java, const LogRecord& record) {
  const LocalRef<jstring> className = java.text(record.getSourceClassName());
  const LocalRef<jstring> method = java.text(record.getSourceMethodName() + "(Native Method)");
  const jlong object = addressOf(record.getObjectReference());
  switch (record.getType().getValue()) {
    case LogRecordType::ENTRY:
      return java.call(kEntry, className, object, method, java.arguments());
    case LogRecordType::EXIT:
      if (record.getNumArguments() == 0) return java.call(kExit, className, object, method);
      return java.call(kExitWithReturn, className, object, method, java.text(record.getArgument(0)));
    case LogRecordType::DATA:
      return java.call(kData, className, java.text(record.getLogLevel().toString()), object, method, java.arguments());
    case LogRecordType::THROWING:
      return java.call(kThrowing, className, object, method, java.text(thrownText(record)));
    default:
      sink.captureUnexpected("unexpected record type", " (type: " + std::to_string(record.getType().getValue()) + ")",
                             record);
  }
}

}  // namespace

const RasDescriptor JavaTraceFileLogHandler::rd("JavaTraceFileLogHandler", internal::kMessages);

JavaTraceFileLogHandler::JavaTraceFileLogHandler(JNIEnv* env) : JavaTraceFileLogHandler(env, LogLevel::FINEST) {}

JavaTraceFileLogHandler::JavaTraceFileLogHandler(JNIEnv* env, const LogLevel& level) : LogHandler(level) {
  const internal::MethodTrace trace(rd, this, "JavaTraceFileLogHandler", level);
  java_ = std::make_unique<JavaSink>(env, rd, kTrace);
}

JavaTraceFileLogHandler::~JavaTraceFileLogHandler() = default;

void JavaTraceFileLogHandler::publish(LogRecord& record) {
  if (!(record.getLogLevel() >= getLogLevel()) || !record.getType().isTraceable()) return;
  java_->publish(record, [&](JavaSink::Publication& java) { forward(*java_, java, record); });
}

unsigned long JavaTraceFileLogHandler::getFailureCount() const { return java_->failures(); }

}  // namespace tessel
