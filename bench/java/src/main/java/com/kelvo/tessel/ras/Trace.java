package com.kelvo.tessel.ras;

/** Stands in front of the companion jar's class: takes the native trace and does nothing with it but count. */
public final class Trace {
  /** How many entries have come; of one thread. */
  public static long entries;

  private Trace() {}

  public static void nativeMethodEntry(String className, long object, String method, String[] arguments) {
    entries++;
  }

  public static void nativeMethodExit(String className, long object, String method, String result) {}

  public static void nativeMethodExit(String className, long object, String method) {}

  public static void nativeMethodData(String className, String level, long object, String method, String[] data) {}

  public static void nativeMethodThrowing(String className, long object, String method, String text) {}
}
