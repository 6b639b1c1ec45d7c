// The native methods of the Java classes NativeIPCClient and NativeIPCServer, called as Java calls them.
#pragma once

#include <jni.h>

#define TESSEL_CLIENT(method) Java_com_kelvo_tessel_ipc_impl_NativeIPCClient_##method
#define TESSEL_SERVER(method) Java_com_kelvo_tessel_ipc_impl_NativeIPCServer_##method
extern "C" {
__declspec(dllimport) jlong TESSEL_CLIENT(initialize)(JNIEnv*, jobject, jstring, jstring, jstring);
__declspec(dllimport) jbyteArray TESSEL_CLIENT(sendMessage)(JNIEnv*, jobject, jlong, jbyteArray, jint);
__declspec(dllimport) void TESSEL_CLIENT(shutdown)(JNIEnv*, jobject, jlong);
__declspec(dllimport) jlong TESSEL_SERVER(initialize)(JNIEnv*, jobject, jstring, jstring, jint, jstring);
__declspec(dllimport) void TESSEL_SERVER(shutdown)(JNIEnv*, jobject, jlong);
}

namespace tessel::test::native {

inline jlong openClient(JNIEnv& env, jstring serviceName, jstring directory, jstring propertiesFile) {
  return TESSEL_CLIENT(initialize)(&env, nullptr, serviceName, directory, propertiesFile);
}
inline jbyteArray sendMessage(JNIEnv& env, jobject client, jlong handle, jbyteArray request, jint timeout = -1) {
  return TESSEL_CLIENT(sendMessage)(&env, client, handle, request, timeout);
}
inline void closeClient(JNIEnv& env, jlong handle) { TESSEL_CLIENT(shutdown)(&env, nullptr, handle); }
inline jlong openServer(JNIEnv& env, jobject server, jstring serviceName, jstring directory, jstring adminGroup,
                        jint maxConnections = -1) {
  return TESSEL_SERVER(initialize)(&env, server, serviceName, directory, maxConnections, adminGroup);
}
inline void closeServer(JNIEnv& env, jlong handle) { TESSEL_SERVER(shutdown)(&env, nullptr, handle); }

}  // namespace tessel::test::native

#undef TESSEL_CLIENT
#undef TESSEL_SERVER
