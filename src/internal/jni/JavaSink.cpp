#include "internal/jni/JavaSink.h"

#include <tessel/FFDC.h>
#include <tessel/LogRecord.h>
#include <tessel/NYXException.h>
#include <tessel/RasDescriptor.h>

#include <algorithm>
#include <sstream>

#include "internal/jni/Text.h"

namespace tessel::internal::jni {
namespace {

using Probe = std::string (*)();
constexpr Probe kMachineProbe = FFDC::PROBE_001;
constexpr Probe kStringProbe = FFDC::PROBE_002;
constexpr Probe kClassProbe = FFDC::PROBE_003;
constexpr std::array kMethodProbes{FFDC::PROBE_004, FFDC::PROBE_005, FFDC::PROBE_006, FFDC::PROBE_007, FFDC::PROBE_008};
constexpr Probe kThreadProbe = FFDC::PROBE_009;
constexpr Probe kUnexpectedProbe = FFDC::PROBE_010;
constexpr Probe kCallProbe = FFDC::PROBE_011;

constexpr const char* kNoEnvironment = "JNI environment not available";

std::string lineOf(const LogRecord& record) {
  std::ostringstream line;
  line << record;
  return line.str();
}

// Empty, with no exception left behind, when there is no such class.
GlobalRef<jclass> globalClass(JNIEnv& env, const char* name) {
  const LocalRef<jclass> found(env, env.FindClass(name));
  GlobalRef<jclass> kept;
  if (found) kept = GlobalRef<jclass>(env, found.get());
  env.ExceptionClear();
  return kept;
}

}  // namespace

JavaSink::JavaSink(JNIEnv* env, const RasDescriptor& handler, const SinkClass& target)
    : handler_(handler), methods_(target.methods.size()) {
  if (!env) {
    captureMissing(kThreadProbe(), kNoEnvironment);
    return;
  }
  const PendingException aside(*env);
  if (env->GetJavaVM(&vm_) != JNI_OK) {
    captureMissing(kMachineProbe(), "GetJavaVM failed");
    return;
  }
  findClasses(*env, target);
  if (class_) findMethods(*env, target);
}

JavaSink::~JavaSink() = default;

void JavaSink::findClasses(JNIEnv& env, const SinkClass& target) {
  string_ = globalClass(env, "java/lang/String");
  if (!string_) captureMissing(kStringProbe(), "java.lang.String class not available");
  class_ = globalClass(env, target.name);
  if (!class_) captureMissing(kClassProbe(), target.missing);
}

// The exception of a method that is missing is cleared before the capture, which goes through Java code.
void JavaSink::findMethods(JNIEnv& env, const SinkClass& target) {
  for (std::size_t i = 0; i < target.methods.size(); ++i) {
    const SinkMethod& wanted = target.methods[i];
    methods_[i].id = env.GetStaticMethodID(class_.get(), wanted.name, wanted.signature);
    if (methods_[i].id) continue;
    env.ExceptionClear();
    captureMissing(kMethodProbes.at(i)(), wanted.missing);
  }
}

bool JavaSink::attach(std::optional<AttachScope>& thread) noexcept {
  try {
    thread.emplace(vm_);
    return true;
  } catch (const NYXException& exception) {
    if (attachFailed_.exchange(true)) return false;
    const std::string text = kNoEnvironment;
    FFDC::internalCapture(handler_.getClassName(), nullptr, "publish", kThreadProbe(), &exception, 1, &text);
  } catch (...) {  // NOLINT(bugprone-empty-catch): without memory the record is dropped
  }
  return false;
}

unsigned long JavaSink::failures() const noexcept {
  unsigned long sum = 0;
  for (const Method& method : methods_) sum += method.failures;
  return sum;
}

void JavaSink::captureMissing(const std::string& probe, const std::string& text) const {
  const std::string& name = handler_.getClassName();
  FFDC::internalCapture(name, nullptr, name, probe, nullptr, 1, &text);
}

void JavaSink::captureUnexpected(const std::string& what, const std::string& detail, const LogRecord& record) const {
  const std::string line = lineOf(record);
  FFDC::internalCapture(handler_.getClassName(), nullptr, "publish", kUnexpectedProbe(), nullptr, 3, &what, &detail,
                        &line);
}

void JavaSink::captureCall(const LogRecord& record) const {
  const std::string what = "calling Java method failed with an exception";
  const std::string where = "Exception traceback written to stderr";
  const std::string line = lineOf(record);
  FFDC::internalCapture(handler_.getClassName(), nullptr, "publish", kCallProbe(), nullptr, 3, &what, &where, &line);
}

LocalRef<jstring> JavaSink::Publication::text(const std::string& text) {
  if (failed_) return {env_, nullptr};
  LocalRef<jstring> string(env_, env_.NewStringUTF(isPlain(text) ? text.c_str() : javaFromNative(text).c_str()));
  if (!string) failed_ = true;
  return string;
}

LocalRef<jobjectArray> JavaSink::Publication::arguments() {
  constexpr unsigned kKept = 5;  // by the record
  const unsigned count = std::min(record_.getNumArguments(), kKept);
  const bool possible = !failed_ && sink_.string_;
  LocalRef<jobjectArray> array(
      env_, possible ? env_.NewObjectArray(static_cast<jsize>(count), sink_.string_.get(), nullptr) : nullptr);
  if (!array) failed_ = true;
  for (unsigned i = 0; i < count && !failed_; ++i) {
    const LocalRef<jstring> element = text(record_.getArgument(i));
    if (failed_) break;
    env_.SetObjectArrayElement(array.get(), static_cast<jsize>(i), element.get());
    if (env_.ExceptionCheck()) failed_ = true;
  }
  return array;
}

void JavaSink::Publication::invoke(Method& method, const jvalue* values) {
  if (!failed_ && method.id) env_.CallStaticVoidMethodA(sink_.class_.get(), method.id, values);
  if (env_.ExceptionCheck()) {
    failed_ = true;
    env_.ExceptionDescribe();
    env_.ExceptionClear();
  }
  if (failed_ && method.failures++ == 0) sink_.captureCall(record_);
}

}  // namespace tessel::internal::jni
