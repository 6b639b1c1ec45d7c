/// @file
/// The names of the Java Native Interface that the library's own headers mention, as that interface declares them.
/// With them no header of the library needs jni.h, which may be included before or after.
#pragma once

// The names are not ours.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,modernize-use-using)
class _jobject;
class _jclass;
class _jstring;
class _jarray;
class _jbyteArray;
class _jobjectArray;
class _jthrowable;
struct _jmethodID;
struct JNIEnv_;
struct JavaVM_;

typedef JNIEnv_ JNIEnv;
typedef JavaVM_ JavaVM;
typedef _jobject* jobject;
typedef _jclass* jclass;
typedef _jstring* jstring;
typedef _jarray* jarray;
typedef _jbyteArray* jbyteArray;
typedef _jobjectArray* jobjectArray;
typedef _jthrowable* jthrowable;
typedef _jmethodID* jmethodID;

#if defined(_WIN32)
typedef long jint;
#else
typedef int jint;
#endif
typedef jint jsize;
typedef signed char jbyte;
typedef unsigned char jboolean;
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,modernize-use-using)
