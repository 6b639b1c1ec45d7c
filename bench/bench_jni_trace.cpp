// The native method of com.kelvo.tessel.bench.TracePoint.
#include <jni.h>

#include "TraceSamples.h"

namespace {

volatile int sink = 0;

}  // namespace

extern "C" JNIEXPORT void JNICALL Java_com_kelvo_tessel_bench_TracePoint_pass(JNIEnv*, jclass, jint times) {
  for (jint i = 0; i < times; ++i) sink = bench::traced(sink);
}
