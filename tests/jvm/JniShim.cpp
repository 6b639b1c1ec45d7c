#include "jvm/JniShim.h"

#include <windows.h>

#include <cstring>
#include <map>
#include <stdexcept>
#include <type_traits>

namespace tessel::test {
namespace {

// Of the shim that exists.
const JNINativeInterface_* original = nullptr;
JniShim::Open counts;
std::string failing;
unsigned left = 0;  // calls until the failure; 0 for none
JniShim::Failure kind = JniShim::Failure::silent;
bool failed = false;

bool isLibrary(const void* address) {
  HMODULE module = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     static_cast<const char*>(address), &module);
  return module && module == GetModuleHandleA("tesselnative.dll");
}

bool fails(JNIEnv* env, const char* function) {
  if (failing != function || left == 0 || --left > 0) return false;
  failed = true;
  const bool throws = std::strcmp(function, "GetJavaVM") != 0;  // all others may
  if (throws && kind == JniShim::Failure::withException) {
    const jclass clazz = original->FindClass(env, "java/lang/OutOfMemoryError");
    original->ThrowNew(env, clazz, "made up");
    original->DeleteLocalRef(env, clazz);
  }
  return true;
}

template <class Result>
Result failure() {
  if constexpr (std::is_same_v<Result, jint>) return JNI_ERR;
  if constexpr (!std::is_void_v<Result>) return Result();
}

// What a successful call takes or gives back.
template <class Result>
void count(const std::string& function, Result result) {
  if constexpr (std::is_convertible_v<Result, jobject>) {
    if (result) ++(function == "NewGlobalRef" ? counts.globalReferences : counts.localReferences);
  }
  if constexpr (std::is_same_v<Result, const char*>) ++counts.strings;
  if constexpr (std::is_same_v<Result, jbyte*>) ++counts.arrays;
}

template <std::size_t size>
struct Name {
  constexpr Name(const char (&name)[size]) { std::copy_n(name, size, text); }  // NOLINT(google-explicit-constructor)
  char text[size]{};
};

template <Name name, auto member>
struct Shim;

template <Name name, class Result, class... Arguments, Result (*JNINativeInterface_::*member)(JNIEnv*, Arguments...)>
struct Shim<name, member> {
  static Result call(JNIEnv* env, Arguments... arguments) {
    if (!isLibrary(__builtin_return_address(0))) return (original->*member)(env, arguments...);
    if (fails(env, name.text)) return failure<Result>();
    if constexpr (std::is_void_v<Result>) {
      (original->*member)(env, arguments...);
    } else {
      const Result result = (original->*member)(env, arguments...);
      count(name.text, result);
      return result;
    }
  }
};

using Install = void (*)(JNINativeInterface_&);

template <Name name, auto member>
std::pair<const std::string, Install> shim() {
  return {name.text, [](JNINativeInterface_& table) { table.*member = &Shim<name, member>::call; }};
}

#define TESSEL_SHIM(function) shim<#function, &JNINativeInterface_::function>()

const std::map<std::string, Install>& shims() {
  static const std::map<std::string, Install> all{
      TESSEL_SHIM(CallObjectMethodA),     TESSEL_SHIM(CallObjectMethodV), TESSEL_SHIM(CallStaticVoidMethodA),
      TESSEL_SHIM(CallStaticVoidMethodV), TESSEL_SHIM(FindClass),         TESSEL_SHIM(GetByteArrayElements),
      TESSEL_SHIM(GetByteArrayRegion),    TESSEL_SHIM(GetJavaVM),         TESSEL_SHIM(GetMethodID),
      TESSEL_SHIM(GetObjectArrayElement), TESSEL_SHIM(GetObjectClass),    TESSEL_SHIM(GetStaticMethodID),
      TESSEL_SHIM(GetStringUTFChars),     TESSEL_SHIM(NewByteArray),      TESSEL_SHIM(NewGlobalRef),
      TESSEL_SHIM(NewObjectArray),        TESSEL_SHIM(NewStringUTF),      TESSEL_SHIM(SetByteArrayRegion),
      TESSEL_SHIM(SetObjectArrayElement), TESSEL_SHIM(ThrowNew)};
  return all;
}

#undef TESSEL_SHIM

// What is given back, and what cannot fail but takes a reference. Functions, not lambdas: between a lambda and its
// caller may lie a function of the compiler's, whose address would be taken for the caller's.
void deleteLocalRef(JNIEnv* env, jobject reference) {
  if (reference && isLibrary(__builtin_return_address(0))) --counts.localReferences;
  original->DeleteLocalRef(env, reference);
}

void deleteGlobalRef(JNIEnv* env, jobject reference) {
  if (reference && isLibrary(__builtin_return_address(0))) --counts.globalReferences;
  original->DeleteGlobalRef(env, reference);
}

jthrowable exceptionOccurred(JNIEnv* env) {
  const jthrowable thrown = original->ExceptionOccurred(env);
  if (thrown && isLibrary(__builtin_return_address(0))) ++counts.localReferences;
  return thrown;
}

void releaseStringUTFChars(JNIEnv* env, jstring string, const char* characters) {
  if (isLibrary(__builtin_return_address(0))) --counts.strings;
  original->ReleaseStringUTFChars(env, string, characters);
}

void releaseByteArrayElements(JNIEnv* env, jbyteArray array, jbyte* bytes, jint mode) {
  if (isLibrary(__builtin_return_address(0))) --counts.arrays;
  original->ReleaseByteArrayElements(env, array, bytes, mode);
}

void countReleases(JNINativeInterface_& table) {
  table.DeleteLocalRef = deleteLocalRef;
  table.DeleteGlobalRef = deleteGlobalRef;
  table.ExceptionOccurred = exceptionOccurred;
  table.ReleaseStringUTFChars = releaseStringUTFChars;
  table.ReleaseByteArrayElements = releaseByteArrayElements;
}

}  // namespace

JniShim::JniShim(JNIEnv& env) : env_(env), original_(env.functions), table_(*env.functions) {
  original = original_;
  failing.clear();
  failed = false;
  counts = {};
  for (const auto& [name, install] : shims()) install(table_);
  countReleases(table_);
  env_.functions = &table_;
}

JniShim::~JniShim() { env_.functions = original_; }

std::vector<std::string> JniShim::functions() {
  std::vector<std::string> names;
  for (const auto& [name, install] : shims()) names.push_back(name);
  return names;
}

void JniShim::failOn(const std::string& function, unsigned nth, Failure failure) {
  if (shims().count(function) == 0) throw std::logic_error(function);
  failing = function;
  left = nth;
  kind = failure;
  failed = false;
  counts = {};
}

bool JniShim::hasFailed() const { return failed; }

void JniShim::takeOver() { --counts.localReferences; }

JniShim::Open JniShim::open() const { return counts; }

}  // namespace tessel::test
