// A Java class whose static methods take log records.
#pragma once

#include <jni.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "internal/jni/PendingException.h"
#include "internal/jni/References.h"

namespace tessel {
class LogRecord;
class NYXException;
class RasDescriptor;
}  // namespace tessel

namespace tessel::internal::jni {

struct SinkMethod {
  const char* name;
  const char* signature;
  const char* missing;  // what a capture says when the class does not have it
};

struct SinkClass {
  const char* name;
  const char* missing;
  std::span<const SinkMethod> methods;
};

// What both Java handlers have in common. Any thread, attached for the length of a publication if need be. Nothing is
// thrown and no Java exception is left behind: a failure becomes a capture, of each kind only the first one, and the
// record is dropped.
class JavaSink {
 public:
  class Publication;

  // Captures what is missing, under the handler's class and its constructor's name.
  JavaSink(JNIEnv* env, const RasDescriptor& handler, const SinkClass& target);
  ~JavaSink();
  JavaSink(const JavaSink&) = delete;
  JavaSink& operator=(const JavaSink&) = delete;

  // Calls the body with a Publication. A Java exception that is pending is set aside meanwhile.
  template <class Body>
  void publish(const LogRecord& record, Body body) noexcept;

  // How many calls have failed, of all methods.
  unsigned long failures() const noexcept;

  // Captures a record that the handler does not know what to do with.
  void captureUnexpected(const std::string& what, const std::string& detail, const LogRecord& record) const;

 private:
  struct Method {
    jmethodID id = nullptr;
    std::atomic<unsigned long> failures{0};
  };

  void findClasses(JNIEnv& env, const SinkClass& target);
  void findMethods(JNIEnv& env, const SinkClass& target);
  bool attach(std::optional<AttachScope>& thread) noexcept;
  void captureMissing(const std::string& probe, const std::string& text) const;
  void captureCall(const LogRecord& record) const;

  const RasDescriptor& handler_;
  JavaVM* vm_ = nullptr;
  GlobalRef<jclass> string_;
  GlobalRef<jclass> class_;
  std::vector<Method> methods_;
  std::atomic<bool> attachFailed_{false};
};

// One record on its way. When an object cannot be made, the ones that follow are empty, and call() reports it.
class JavaSink::Publication {
 public:
  Publication(JavaSink& sink, JNIEnv& env, const LogRecord& record) : sink_(sink), env_(env), record_(record) {}
  ~Publication() {
    if (failed_) env_.ExceptionClear();
  }
  Publication(const Publication&) = delete;
  Publication& operator=(const Publication&) = delete;

  LocalRef<jstring> text(const std::string& text);
  // The arguments of the record.
  LocalRef<jobjectArray> arguments();

  // Calls the method unless the class does not have it. The arguments are local references and numbers.
  template <class... Arguments>
  void call(std::size_t method, const Arguments&... arguments) {
    const std::array<jvalue, sizeof...(arguments)> values{valueOf(arguments)...};
    invoke(sink_.methods_[method], values.data());
  }

 private:
  static jvalue valueOf(jlong number) {
    jvalue value;
    value.j = number;
    return value;
  }
  template <class T>
  static jvalue valueOf(const LocalRef<T>& reference) {
    jvalue value;
    value.l = reference.get();
    return value;
  }

  void invoke(Method& method, const jvalue* values);

  JavaSink& sink_;
  JNIEnv& env_;
  const LogRecord& record_;
  bool failed_ = false;
};

template <class Body>
void JavaSink::publish(const LogRecord& record, Body body) noexcept {
  if (!class_) return;
  std::optional<AttachScope> thread;
  if (!attach(thread)) return;
  const PendingException aside(thread->env());
  try {
    Publication publication(*this, thread->env(), record);
    body(publication);
  } catch (...) {  // NOLINT(bugprone-empty-catch): without memory the record is dropped
  }
}

}  // namespace tessel::internal::jni
