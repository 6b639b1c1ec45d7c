// What stands around every native method.
//
//   JNIEXPORT jboolean JNICALL Java_..._isCurrentUserMemberOfGroup(JNIEnv* env, jclass, jstring group) {
//     return guarded(env, {rd, "isCurrentUserMemberOfGroup", kExceptions}, [&](NativeCall& call) {
//       return NYXUtils::isCurrentUserMemberOfGroup(call.ansiText(group, "group"));
//     });
//   }
//
// Entry, exit and what is thrown are traced under the method's name. Nothing native leaves: an exception becomes a
// Java exception, raised as the last act, when every trace point has been passed, because no Java code may run while
// it is pending. A Java exception that is pending already stays as it is, and nothing is raised.
#pragma once

#include <jni.h>

#include <tessel/JNIEnvWrapper.h>
#include <tessel/NYXException.h>

#include <exception>
#include <span>
#include <string>
#include <type_traits>

#include "internal/MethodTrace.h"

namespace tessel::internal::jni {

// Null was passed where a string or an array is needed; the message is the argument's name. A table without a row for
// it makes it the family's general exception.
class NullArgument : public NYXException {
 public:
  using NYXException::NYXException;
};

struct ExceptionRow {
  bool (*covers)(const NYXException& exception) noexcept;
  const char* javaClass;
};

template <class Exception>
constexpr ExceptionRow becomes(const char* javaClass) {
  return {[](const NYXException& exception) noexcept { return dynamic_cast<const Exception*>(&exception) != nullptr; },
          javaClass};
}

// Which Java exception a native one becomes: that of the first row that covers it, so that special ones stand before
// general ones. All others, those of the standard library included, become the general one.
struct ExceptionTable {
  std::span<const ExceptionRow> rows;
  const char* general;
};

struct EntryPoint {
  const RasDescriptor& rd;
  const char* method;
  const ExceptionTable& exceptions;
};

// One call of a native method.
class NativeCall {
 public:
  NativeCall(JNIEnv& threadsEnv, const EntryPoint& entry) noexcept
      : env(threadsEnv), java(&threadsEnv), trace(entry.rd, nullptr, entry.method), rd_(entry.rd) {}

  // The characters in modified UTF-8. Throws NullArgument.
  std::string text(jstring string, const char* argument) const;

  // The name of a file or an account in the ANSI code page. Throws NullArgument, and NYXIOException KTBNV0178 for a
  // name that has no counterpart there.
  std::string ansiText(jstring string, const char* argument) const;

  JNIEnv& env;
  JNIEnvWrapper java;
  MethodTrace trace;

 private:
  const RasDescriptor& rd_;
};

void traceThrown(const MethodTrace& trace, const std::exception_ptr& thrown) noexcept;

// When the class of the Java exception is missing, the general one of the table is raised instead, then
// java.lang.RuntimeException, with the same message.
void raise(JNIEnv& env, const ExceptionTable& table, const std::exception_ptr& thrown) noexcept;

// Returns what the body returns; zero, false or null when it throws.
template <class Body>
std::invoke_result_t<Body&, NativeCall&> guarded(JNIEnv* env, const EntryPoint& entry, Body body) noexcept {
  using Result = std::invoke_result_t<Body&, NativeCall&>;
  std::exception_ptr thrown;
  {
    NativeCall call(*env, entry);
    try {
      if constexpr (std::is_void_v<Result>) {
        return body(call);
      } else {
        return call.trace.result(body(call));
      }
    } catch (...) {
      thrown = std::current_exception();
      traceThrown(call.trace, thrown);
    }
  }
  raise(*env, entry.exceptions, thrown);
  return Result();
}

}  // namespace tessel::internal::jni
