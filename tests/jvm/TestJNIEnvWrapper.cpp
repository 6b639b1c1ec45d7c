// Each member of the wrapper against a table of functions that say how they were called.
#include "jvm/Jvm.h"

#include <cstdarg>

#include <tessel/JNIEnvWrapper.h>
#include <tessel/NYXException.h>

#include "support/Thrown.h"

namespace tessel::test {
namespace {

// References and ids that only have to be recognised.
template <class T>
T token(std::intptr_t number) {
  return reinterpret_cast<T>(number);
}

const auto kObject = token<jobject>(0x10);
const auto kClass = token<jclass>(0x20);
const auto kString = token<jstring>(0x30);
const auto kArray = token<jbyteArray>(0x40);
const auto kObjects = token<jobjectArray>(0x50);
const auto kMethod = token<jmethodID>(0x60);
const auto kThrown = token<jthrowable>(0x70);
const auto kResult = token<jobject>(0x80);
jbyte bytes[] = {1, 2, 3};

struct Env : JNIEnv_ {
  Env();

  JNINativeInterface_ table{};
  std::string call;
};

template <class... Arguments>
void note(JNIEnv* env, const char* function, const Arguments&... arguments) {
  std::ostringstream text;
  text << function;
  (static_cast<void>(text << ' ' << arguments), ...);
  static_cast<Env*>(env)->call = text.str();
}

Env::Env() {
  functions = &table;
  table.CallObjectMethodV = [](JNIEnv* env, jobject object, jmethodID method, std::va_list arguments) {
    const int first = va_arg(arguments, int);
    const jlong second = va_arg(arguments, jlong);
    note(env, "CallObjectMethod", object, method, first, second);
    return kResult;
  };
  table.CallStaticVoidMethodV = [](JNIEnv* env, jclass clazz, jmethodID method, std::va_list arguments) {
    const jobject first = va_arg(arguments, jobject);
    const double second = va_arg(arguments, double);
    note(env, "CallStaticVoidMethod", clazz, method, first, second);
  };
  table.DeleteGlobalRef = [](JNIEnv* env, jobject reference) { note(env, "DeleteGlobalRef", reference); };
  table.DeleteLocalRef = [](JNIEnv* env, jobject reference) { note(env, "DeleteLocalRef", reference); };
  table.ExceptionCheck = [](JNIEnv* env) -> jboolean {
    note(env, "ExceptionCheck");
    return 42;
  };
  table.ExceptionClear = [](JNIEnv* env) { note(env, "ExceptionClear"); };
  table.ExceptionDescribe = [](JNIEnv* env) { note(env, "ExceptionDescribe"); };
  table.ExceptionOccurred = [](JNIEnv* env) {
    note(env, "ExceptionOccurred");
    return kThrown;
  };
  table.FindClass = [](JNIEnv* env, const char* name) {
    note(env, "FindClass", name);
    return kClass;
  };
  table.GetArrayLength = [](JNIEnv* env, jarray array) -> jsize {
    note(env, "GetArrayLength", array);
    return 11;
  };
  table.GetByteArrayElements = [](JNIEnv* env, jbyteArray array, jboolean* isCopy) -> jbyte* {
    note(env, "GetByteArrayElements", array);
    *isCopy = JNI_TRUE;
    return bytes;
  };
  table.GetJavaVM = [](JNIEnv* env, JavaVM** vm) -> jint {
    note(env, "GetJavaVM");
    *vm = token<JavaVM*>(0x90);
    return -3;
  };
  table.GetMethodID = [](JNIEnv* env, jclass clazz, const char* name, const char* signature) {
    note(env, "GetMethodID", clazz, name, signature);
    return kMethod;
  };
  table.GetObjectArrayElement = [](JNIEnv* env, jobjectArray array, jsize index) {
    note(env, "GetObjectArrayElement", array, index);
    return kResult;
  };
  table.GetObjectClass = [](JNIEnv* env, jobject object) {
    note(env, "GetObjectClass", object);
    return kClass;
  };
  table.GetStaticMethodID = [](JNIEnv* env, jclass clazz, const char* name, const char* signature) {
    note(env, "GetStaticMethodID", clazz, name, signature);
    return kMethod;
  };
  table.NewByteArray = [](JNIEnv* env, jsize length) {
    note(env, "NewByteArray", length);
    return kArray;
  };
  table.NewGlobalRef = [](JNIEnv* env, jobject reference) {
    note(env, "NewGlobalRef", reference);
    return kResult;
  };
  table.NewObjectArray = [](JNIEnv* env, jsize length, jclass clazz, jobject initial) {
    note(env, "NewObjectArray", length, clazz, initial);
    return kObjects;
  };
  table.NewStringUTF = [](JNIEnv* env, const char* text) {
    note(env, "NewStringUTF", text);
    return kString;
  };
  table.SetByteArrayRegion = [](JNIEnv* env, jbyteArray array, jsize start, jsize length, const jbyte* from) {
    note(env, "SetByteArrayRegion", array, start, length, from == bytes);
  };
  table.SetObjectArrayElement = [](JNIEnv* env, jobjectArray array, jsize index, jobject value) {
    note(env, "SetObjectArrayElement", array, index, value);
  };
  table.ThrowNew = [](JNIEnv* env, jclass clazz, const char* message) -> jint {
    note(env, "ThrowNew", clazz, message);
    return -7;
  };
  table.GetStringUTFChars = [](JNIEnv*, jstring, jboolean*) -> const char* { return nullptr; };
}

class Wrapper : public testing::Test {
 protected:
  Env env;
  const JNIEnvWrapper java{&env};
};

using JavaString = JvmTest;

}  // namespace

TEST_F(Wrapper, ForwardsCallsWithTheirArguments) {
  EXPECT_EQ(java.CallObjectMethod(kObject, kMethod, 5, jlong{6}), kResult);
  EXPECT_EQ(env.call, "CallObjectMethod 0x10 0x60 5 6");
  java.CallStaticVoidMethod(kClass, kMethod, kObject, 0.5);
  EXPECT_EQ(env.call, "CallStaticVoidMethod 0x20 0x60 0x10 0.5");
}

TEST_F(Wrapper, ForwardsWhatConcernsReferences) {
  java.DeleteGlobalRef(kObject);
  EXPECT_EQ(env.call, "DeleteGlobalRef 0x10");
  java.DeleteLocalRef(kObject);
  EXPECT_EQ(env.call, "DeleteLocalRef 0x10");
  EXPECT_EQ(java.NewGlobalRef(kObject), kResult);
  EXPECT_EQ(env.call, "NewGlobalRef 0x10");
}

TEST_F(Wrapper, ForwardsWhatConcernsExceptions) {
  EXPECT_EQ(java.ExceptionCheck(), 42);
  EXPECT_EQ(env.call, "ExceptionCheck");
  java.ExceptionClear();
  EXPECT_EQ(env.call, "ExceptionClear");
  java.ExceptionDescribe();
  EXPECT_EQ(env.call, "ExceptionDescribe");
  EXPECT_EQ(java.ExceptionOccurred(), kThrown);
  EXPECT_EQ(env.call, "ExceptionOccurred");
  EXPECT_EQ(java.ThrowNew(kClass, "why"), -7);
  EXPECT_EQ(env.call, "ThrowNew 0x20 why");
}

TEST_F(Wrapper, ForwardsWhatConcernsClassesAndTheMachine) {
  EXPECT_EQ(java.FindClass("a/B"), kClass);
  EXPECT_EQ(env.call, "FindClass a/B");
  EXPECT_EQ(java.GetObjectClass(kObject), kClass);
  EXPECT_EQ(env.call, "GetObjectClass 0x10");
  EXPECT_EQ(java.GetMethodID(kClass, "m", "()V"), kMethod);
  EXPECT_EQ(env.call, "GetMethodID 0x20 m ()V");
  EXPECT_EQ(java.GetStaticMethodID(kClass, "m", "()V"), kMethod);
  EXPECT_EQ(env.call, "GetStaticMethodID 0x20 m ()V");
  JavaVM* vm = nullptr;
  EXPECT_EQ(java.GetJavaVM(&vm), -3);
  EXPECT_EQ(env.call, "GetJavaVM");
  EXPECT_EQ(vm, token<JavaVM*>(0x90));
}

TEST_F(Wrapper, ForwardsWhatConcernsArraysAndStrings) {
  EXPECT_EQ(java.GetArrayLength(kArray), 11);
  EXPECT_EQ(env.call, "GetArrayLength 0x40");
  jboolean isCopy = JNI_FALSE;
  EXPECT_EQ(java.GetByteArrayElements(kArray, &isCopy), bytes);
  EXPECT_EQ(env.call, "GetByteArrayElements 0x40");
  EXPECT_EQ(isCopy, JNI_TRUE);
  EXPECT_EQ(java.NewByteArray(9), kArray);
  EXPECT_EQ(env.call, "NewByteArray 9");
  java.SetByteArrayRegion(kArray, 1, 2, bytes);
  EXPECT_EQ(env.call, "SetByteArrayRegion 0x40 1 2 1");
  EXPECT_EQ(java.GetObjectArrayElement(kObjects, 4), kResult);
  EXPECT_EQ(env.call, "GetObjectArrayElement 0x50 4");
  EXPECT_EQ(java.NewObjectArray(8, kClass, kObject), kObjects);
  EXPECT_EQ(env.call, "NewObjectArray 8 0x20 0x10");
  java.SetObjectArrayElement(kObjects, 3, kObject);
  EXPECT_EQ(env.call, "SetObjectArrayElement 0x50 3 0x10");
  EXPECT_EQ(java.NewStringUTF("text"), kString);
  EXPECT_EQ(env.call, "NewStringUTF text");
}

TEST_F(Wrapper, AStringWithoutCharactersIsAFailure) {
  EXPECT_EQ(thrownBy<NYXException>([&] { java.getString(kString); }), "GetStringUTFChars failed");
  EXPECT_EQ(thrownBy<NYXException>([&] { java.getString(nullptr); }), "GetStringUTFChars failed");
}

TEST_F(JavaString, HasItsCharactersInModifiedUtf8) {
  const auto charactersOf = [&](std::u16string_view text) {
    const jstring string = env.NewString(reinterpret_cast<const jchar*>(text.data()), static_cast<jsize>(text.size()));
    const std::string characters = JNIEnvWrapper(&env).getString(string);
    env.DeleteLocalRef(string);
    return characters;
  };
  EXPECT_EQ(charactersOf(u""), "");
  EXPECT_EQ(charactersOf(u"abc"), "abc");
  EXPECT_EQ(charactersOf(u"\u00fc\u4e2d"), "\xC3\xBC\xE4\xB8\xAD");
  EXPECT_EQ(charactersOf(std::u16string_view(u"a\0b", 3)),
            "a\xC0\x80"
            "b");
  EXPECT_EQ(charactersOf(u"\U0001F600"), "\xED\xA0\xBD\xED\xB8\x80");
}

}  // namespace tessel::test
