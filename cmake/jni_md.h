/* What jni.h asks of 64-bit Windows. There is one calling convention there, so that JNICALL says nothing. */
#pragma once

#define JNIEXPORT __declspec(dllexport)
#define JNIIMPORT __declspec(dllimport)
#define JNICALL

typedef long jint;
typedef long long jlong;
typedef signed char jbyte;
