// The native methods of the Java class com.kelvo.tessel.jni.NativeJNI.
#include <jni.h>

#include <tessel/FilePermissionsException.h>
#include <tessel/NYXIOException.h>
#include <tessel/NYXUnsupportedOperationException.h>
#include <tessel/NYXUtils.h>
#include <tessel/RAS.h>

#include <array>

#include "internal/Bundles.h"
#include "internal/jni/Guard.h"

namespace tessel {
namespace {

using internal::jni::becomes;
using internal::jni::ExceptionTable;
using internal::jni::guarded;
using internal::jni::NativeCall;
using internal::jni::NullArgument;

const RasDescriptor rd("NativeJNI", internal::kMessages);

constexpr std::array kRows{
    becomes<NullArgument>("java/lang/NullPointerException"),
    becomes<FilePermissionsException>("com/kelvo/tessel/jni/FilePermissionsException"),
    becomes<NYXUnsupportedOperationException>("java/lang/UnsupportedOperationException"),
    becomes<NYXIOException>("java/io/IOException"),
};
constexpr ExceptionTable kExceptions{kRows, "java/io/IOException"};

// Only the canonical true counts.
bool isTrue(jboolean value) { return value == JNI_TRUE; }

}  // namespace

extern "C" {

JNIEXPORT void JNICALL Java_com_kelvo_tessel_jni_NativeJNI_rasInitialize(JNIEnv* env, jclass, jstring logDirectory,
                                                                         jstring traceSpecNamePrefix) {
  guarded(env, {rd, "rasInitialize", kExceptions}, [&](NativeCall& call) {
    const std::string directory = call.ansiText(logDirectory, "logDirectory");
    RAS::initialize(RASEnvironment::JAVA_APP, env, directory, call.text(traceSpecNamePrefix, "traceSpecNamePrefix"));
  });
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_jni_NativeJNI_rasSetLevel(JNIEnv* env, jclass, jstring specification) {
  guarded(env, {rd, "rasSetLevel", kExceptions},
          [&](NativeCall& call) { RAS::setLevel(call.text(specification, "traceSpecification")); });
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_jni_NativeJNI_checkFilePermissions(JNIEnv* env, jclass, jstring path) {
  guarded(env, {rd, "checkFilePermissions", kExceptions}, [&](NativeCall& call) {
    if (!path) throw FilePermissionsException(NLS::format(rd, "KTBNV0167_FILEPATH_NULL"));
    NYXUtils::checkFilePermissions(call.ansiText(path, "path"));
  });
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_jni_NativeJNI_chmod(JNIEnv* env, jclass, jstring path, jint mode) {
  guarded(env, {rd, "chmod", kExceptions},
          [&](NativeCall& call) { NYXUtils::chmod(call.ansiText(path, "path"), static_cast<int>(mode)); });
}

JNIEXPORT jboolean JNICALL Java_com_kelvo_tessel_jni_NativeJNI_doesCurrentUserHaveSpecialAuthority(JNIEnv* env, jclass,
                                                                                                   jstring authority) {
  return guarded(env, {rd, "doesCurrentUserHaveSpecialAuthority", kExceptions}, [&](NativeCall& call) {
    return NYXUtils::doesCurrentUserHaveSpecialAuthority(call.text(authority, "authority"));
  });
}

JNIEXPORT jboolean JNICALL Java_com_kelvo_tessel_jni_NativeJNI_isCurrentUserMemberOfGroup(JNIEnv* env, jclass,
                                                                                          jstring group) {
  return guarded(env, {rd, "isCurrentUserMemberOfGroup", kExceptions},
                 [&](NativeCall& call) { return NYXUtils::isCurrentUserMemberOfGroup(call.ansiText(group, "group")); });
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_jni_NativeJNI_mkGroupOmniWrite(JNIEnv* env, jclass, jstring path,
                                                                            jboolean everyoneWrite) {
  guarded(env, {rd, "mkGroupOmniWrite", kExceptions},
          [&](NativeCall& call) { NYXUtils::mkGroupOmniWrite(call.ansiText(path, "path"), isTrue(everyoneWrite)); });
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_jni_NativeJNI_mkGroupWrite(JNIEnv* env, jclass, jstring path,
                                                                        jstring group, jboolean flag) {
  guarded(env, {rd, "mkGroupWrite", kExceptions}, [&](NativeCall& call) {
    const std::string directory = call.ansiText(path, "path");
    NYXUtils::mkGroupWrite(directory, call.ansiText(group, "group"), isTrue(flag));
  });
}

JNIEXPORT void JNICALL Java_com_kelvo_tessel_jni_NativeJNI_mkpriv(JNIEnv* env, jclass, jstring path,
                                                                  jboolean everyoneRead, jboolean everyoneWrite) {
  guarded(env, {rd, "mkpriv", kExceptions}, [&](NativeCall& call) {
    NYXUtils::mkpriv(call.ansiText(path, "path"), isTrue(everyoneRead), isTrue(everyoneWrite));
  });
}

}  // extern "C"

}  // namespace tessel
