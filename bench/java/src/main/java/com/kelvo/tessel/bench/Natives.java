package com.kelvo.tessel.bench;

import com.kelvo.tessel.jni.NativeLibrary;

/** The native peers, in {@code bench_jni.dll}. */
final class Natives {
  static {
    // First, since it is what the other one needs.
    NativeLibrary.load();
    System.loadLibrary("bench_jni");
  }

  private Natives() {}

  /** Connects a native client. */
  static native long connect(String service);

  /** One exchange of 64 bytes. */
  static native void exchange(long client);

  static native void disconnect(long client);

  /** Copies the array in and a new one of the same bytes out. */
  static native byte[] arrayCall(byte[] bytes);

  /** Makes the trace handler and the record for {@link #publish}, and looks up what {@link #callTrace} needs. */
  static native void prepareTrace();

  /** Publishes the record so many times. */
  static native void publish(int times);

  /** Makes the same call of Java so many times, by hand. */
  static native void callTrace(int times);
}
