// The native methods of the Java class NativeJNI, called as Java calls them.
#pragma once

#include <jni.h>

#define TESSEL_NATIVE(method) Java_com_kelvo_tessel_jni_NativeJNI_##method
extern "C" {
__declspec(dllimport) void TESSEL_NATIVE(rasInitialize)(JNIEnv*, jclass, jstring, jstring);
__declspec(dllimport) void TESSEL_NATIVE(rasSetLevel)(JNIEnv*, jclass, jstring);
__declspec(dllimport) void TESSEL_NATIVE(checkFilePermissions)(JNIEnv*, jclass, jstring);
__declspec(dllimport) void TESSEL_NATIVE(chmod)(JNIEnv*, jclass, jstring, jint);
__declspec(dllimport) jboolean TESSEL_NATIVE(doesCurrentUserHaveSpecialAuthority)(JNIEnv*, jclass, jstring);
__declspec(dllimport) jboolean TESSEL_NATIVE(isCurrentUserMemberOfGroup)(JNIEnv*, jclass, jstring);
__declspec(dllimport) void TESSEL_NATIVE(mkGroupOmniWrite)(JNIEnv*, jclass, jstring, jboolean);
__declspec(dllimport) void TESSEL_NATIVE(mkGroupWrite)(JNIEnv*, jclass, jstring, jstring, jboolean);
__declspec(dllimport) void TESSEL_NATIVE(mkpriv)(JNIEnv*, jclass, jstring, jboolean, jboolean);
}

namespace tessel::test::native {

inline void rasInitialize(JNIEnv& env, jstring directory, jstring prefix) {
  TESSEL_NATIVE(rasInitialize)(&env, nullptr, directory, prefix);
}
inline void rasSetLevel(JNIEnv& env, jstring specification) {
  TESSEL_NATIVE(rasSetLevel)(&env, nullptr, specification);
}
inline void checkFilePermissions(JNIEnv& env, jstring path) {
  TESSEL_NATIVE(checkFilePermissions)(&env, nullptr, path);
}
inline void chmod(JNIEnv& env, jstring path, jint mode) { TESSEL_NATIVE(chmod)(&env, nullptr, path, mode); }
inline jboolean doesCurrentUserHaveSpecialAuthority(JNIEnv& env, jstring authority) {
  return TESSEL_NATIVE(doesCurrentUserHaveSpecialAuthority)(&env, nullptr, authority);
}
inline jboolean isCurrentUserMemberOfGroup(JNIEnv& env, jstring group) {
  return TESSEL_NATIVE(isCurrentUserMemberOfGroup)(&env, nullptr, group);
}
inline void mkGroupOmniWrite(JNIEnv& env, jstring path, jboolean everyoneWrite) {
  TESSEL_NATIVE(mkGroupOmniWrite)(&env, nullptr, path, everyoneWrite);
}
inline void mkGroupWrite(JNIEnv& env, jstring path, jstring group, jboolean flag) {
  TESSEL_NATIVE(mkGroupWrite)(&env, nullptr, path, group, flag);
}
inline void mkpriv(JNIEnv& env, jstring path, jboolean everyoneRead, jboolean everyoneWrite) {
  TESSEL_NATIVE(mkpriv)(&env, nullptr, path, everyoneRead, everyoneWrite);
}

}  // namespace tessel::test::native

#undef TESSEL_NATIVE
