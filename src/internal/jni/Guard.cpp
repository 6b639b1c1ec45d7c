#include "internal/jni/Guard.h"

#include <tessel/NYXIOException.h>

#include "internal/jni/References.h"
#include "internal/jni/Text.h"

namespace tessel::internal::jni {
namespace {

constexpr const char* kUnknown = "unknown native exception";

// A native exception as Java is to see it.
struct Failure {
  const char* javaClass;
  std::string message;
};

const char* classFor(const ExceptionTable& table, const NYXException& exception) {
  for (const ExceptionRow& row : table.rows) {
    if (row.covers(exception)) return row.javaClass;
  }
  return table.general;
}

Failure failureOf(const ExceptionTable& table, const std::exception_ptr& thrown) {
  try {
    std::rethrow_exception(thrown);
  } catch (const NYXException& exception) {
    return {classFor(table, exception), javaFromNative(exception.getMessage())};
  } catch (const std::exception& exception) {
    return {table.general, javaFromNative(exception.what())};
  } catch (...) {
    return {table.general, kUnknown};
  }
}

// Without memory for the text of the failure the shortage itself is reported; that text needs none.
Failure failureOrShortage(const ExceptionTable& table, const std::exception_ptr& thrown) noexcept {
  try {
    return failureOf(table, thrown);
  } catch (...) {
    return {table.general, "std::bad_alloc"};
  }
}

void sendThrown(const MethodTrace& trace, const std::exception_ptr& thrown) {
  try {
    std::rethrow_exception(thrown);
  } catch (const NYXException& exception) {
    static_cast<void>(trace.thrown(exception));
  } catch (const std::exception& exception) {
    static_cast<void>(trace.thrown(NYXException(exception.what())));
  } catch (...) {
    static_cast<void>(trace.thrown(NYXException(kUnknown)));
  }
}

bool throwNew(JNIEnv& env, const char* javaClass, const std::string& message) noexcept {
  env.ExceptionClear();  // what the attempt before has left behind
  const LocalRef<jclass> clazz(env, env.FindClass(javaClass));
  return clazz && env.ThrowNew(clazz.get(), message.c_str()) == JNI_OK;
}

}  // namespace

std::string NativeCall::text(jstring string, const char* argument) const {
  if (!string) throw NullArgument(argument);
  return java.getString(string);
}

std::string NativeCall::ansiText(jstring string, const char* argument) const {
  std::string ansi;
  if (!ansiFromJava(text(string, argument), ansi)) {
    throw NYXIOException(NLS::format(rd_, "KTBNV0178_NOT_IN_CODE_PAGE", ansi));
  }
  return ansi;
}

void traceThrown(const MethodTrace& trace, const std::exception_ptr& thrown) noexcept {
  if (!traceMayBeOn()) return;
  try {
    sendThrown(trace, thrown);
  } catch (...) {  // NOLINT(bugprone-empty-catch): trace never takes the traced code down
  }
}

void raise(JNIEnv& env, const ExceptionTable& table, const std::exception_ptr& thrown) noexcept {
  if (env.ExceptionCheck()) return;
  const Failure failure = failureOrShortage(table, thrown);
  for (const char* javaClass : {failure.javaClass, table.general, "java/lang/RuntimeException"}) {
    if (throwNew(env, javaClass, failure.message)) return;
  }
}

}  // namespace tessel::internal::jni
