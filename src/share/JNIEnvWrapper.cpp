#include <jni.h>

#include <tessel/JNIEnvWrapper.h>

#include <cstdarg>
#include <memory>

#include "internal/Bundles.h"
#include "internal/MethodTrace.h"

#include <tessel/NYXException.h>

namespace tessel {
namespace {

const RasDescriptor rd("JNIEnvWrapper", internal::kMessages);

}  // namespace

JNIEnvWrapper::JNIEnvWrapper(JNIEnv* env) : env_(env) {}

JNIEnvWrapper::~JNIEnvWrapper() = default;

// NOLINTBEGIN(cert-dcl50-cpp): the functions of the interface have variable arguments
jobject JNIEnvWrapper::CallObjectMethod(jobject object, jmethodID method, ...) const {
  std::va_list arguments;
  va_start(arguments, method);
  jobject result = env_->CallObjectMethodV(object, method, arguments);
  va_end(arguments);
  return result;
}

void JNIEnvWrapper::CallStaticVoidMethod(jclass clazz, jmethodID method, ...) const {
  std::va_list arguments;
  va_start(arguments, method);
  env_->CallStaticVoidMethodV(clazz, method, arguments);
  va_end(arguments);
}
// NOLINTEND(cert-dcl50-cpp)

void JNIEnvWrapper::DeleteGlobalRef(jobject reference) const { env_->DeleteGlobalRef(reference); }
void JNIEnvWrapper::DeleteLocalRef(jobject reference) const { env_->DeleteLocalRef(reference); }
jboolean JNIEnvWrapper::ExceptionCheck() const { return env_->ExceptionCheck(); }
void JNIEnvWrapper::ExceptionClear() const { env_->ExceptionClear(); }
void JNIEnvWrapper::ExceptionDescribe() const { env_->ExceptionDescribe(); }
jthrowable JNIEnvWrapper::ExceptionOccurred() const { return env_->ExceptionOccurred(); }
jclass JNIEnvWrapper::FindClass(const char* name) const { return env_->FindClass(name); }
jsize JNIEnvWrapper::GetArrayLength(jarray array) const { return env_->GetArrayLength(array); }

jbyte* JNIEnvWrapper::GetByteArrayElements(jbyteArray array, jboolean* isCopy) const {
  return env_->GetByteArrayElements(array, isCopy);
}

jint JNIEnvWrapper::GetJavaVM(JavaVM** vm) const { return env_->GetJavaVM(vm); }

jmethodID JNIEnvWrapper::GetMethodID(jclass clazz, const char* name, const char* signature) const {
  return env_->GetMethodID(clazz, name, signature);
}

jobject JNIEnvWrapper::GetObjectArrayElement(jobjectArray array, jsize index) const {
  return env_->GetObjectArrayElement(array, index);
}

jclass JNIEnvWrapper::GetObjectClass(jobject object) const { return env_->GetObjectClass(object); }

jmethodID JNIEnvWrapper::GetStaticMethodID(jclass clazz, const char* name, const char* signature) const {
  return env_->GetStaticMethodID(clazz, name, signature);
}

jbyteArray JNIEnvWrapper::NewByteArray(jsize length) const { return env_->NewByteArray(length); }
jobject JNIEnvWrapper::NewGlobalRef(jobject reference) const { return env_->NewGlobalRef(reference); }

jobjectArray JNIEnvWrapper::NewObjectArray(jsize length, jclass elementClass, jobject initialElement) const {
  return env_->NewObjectArray(length, elementClass, initialElement);
}

jstring JNIEnvWrapper::NewStringUTF(const char* bytes) const { return env_->NewStringUTF(bytes); }

void JNIEnvWrapper::SetByteArrayRegion(jbyteArray array, jsize start, jsize length, const jbyte* bytes) const {
  env_->SetByteArrayRegion(array, start, length, bytes);
}

void JNIEnvWrapper::SetObjectArrayElement(jobjectArray array, jsize index, jobject value) const {
  env_->SetObjectArrayElement(array, index, value);
}

jint JNIEnvWrapper::ThrowNew(jclass clazz, const char* message) const { return env_->ThrowNew(clazz, message); }

std::string JNIEnvWrapper::getString(jstring string) const {
  const auto release = [this, string](const char* characters) { env_->ReleaseStringUTFChars(string, characters); };
  const std::unique_ptr<const char, decltype(release)> characters(
      string ? env_->GetStringUTFChars(string, nullptr) : nullptr, release);
  if (!characters) {
    const internal::MethodTrace trace(rd, this, "getString");
    throw trace.thrown(NYXException("GetStringUTFChars failed"));
  }
  return characters.get();
}

}  // namespace tessel
