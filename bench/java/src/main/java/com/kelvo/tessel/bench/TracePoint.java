package com.kelvo.tessel.bench;

/** A function with a trace point, in {@code bench_jni_trace.dll}, which has the library's sources inside. */
final class TracePoint {
  static {
    System.loadLibrary("bench_jni_trace");
  }

  private TracePoint() {}

  /** Calls the function so many times; trace is off. */
  static native void pass(int times);
}
