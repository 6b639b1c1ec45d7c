/// @file
#pragma once

#include <string>

#include <tessel/Export.h>
#include <tessel/JNITypes.h>

namespace tessel {

/// The calling thread's environment of the Java Native Interface, with a conversion of strings.
///
/// Each member in capitals forwards to the function of the same name of the interface, whose documentation says what
/// it returns and which Java exceptions it leaves pending. The environment is not owned; it belongs to one thread,
/// and so does the wrapper.
class TESSEL_API JNIEnvWrapper {
 public:
  /// @param env not null.
  explicit JNIEnvWrapper(JNIEnv* env);
  JNIEnvWrapper(const JNIEnvWrapper& other) = delete;
  JNIEnvWrapper& operator=(const JNIEnvWrapper& other) = delete;
  virtual ~JNIEnvWrapper();

  jobject CallObjectMethod(jobject object, jmethodID method, ...) const;
  void CallStaticVoidMethod(jclass clazz, jmethodID method, ...) const;
  void DeleteGlobalRef(jobject reference) const;
  void DeleteLocalRef(jobject reference) const;
  jboolean ExceptionCheck() const;
  void ExceptionClear() const;
  void ExceptionDescribe() const;
  jthrowable ExceptionOccurred() const;
  jclass FindClass(const char* name) const;
  jsize GetArrayLength(jarray array) const;
  jbyte* GetByteArrayElements(jbyteArray array, jboolean* isCopy) const;
  jint GetJavaVM(JavaVM** vm) const;
  jmethodID GetMethodID(jclass clazz, const char* name, const char* signature) const;
  jobject GetObjectArrayElement(jobjectArray array, jsize index) const;
  jclass GetObjectClass(jobject object) const;
  jmethodID GetStaticMethodID(jclass clazz, const char* name, const char* signature) const;
  jbyteArray NewByteArray(jsize length) const;
  jobject NewGlobalRef(jobject reference) const;
  jobjectArray NewObjectArray(jsize length, jclass elementClass, jobject initialElement) const;
  jstring NewStringUTF(const char* bytes) const;
  void SetByteArrayRegion(jbyteArray array, jsize start, jsize length, const jbyte* bytes) const;
  void SetObjectArrayElement(jobjectArray array, jsize index, jobject value) const;
  jint ThrowNew(jclass clazz, const char* message) const;

  /// @return the characters in modified UTF-8: a zero character is two bytes, and a character beyond U+FFFF two
  ///         surrogates of three bytes each.
  /// @throws NYXException with the text "GetStringUTFChars failed" when there are none; the string may be null.
  std::string getString(jstring string) const;

 private:
  JNIEnv* env_;
};

}  // namespace tessel
