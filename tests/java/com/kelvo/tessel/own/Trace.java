package com.kelvo.tessel.own;

import java.util.Arrays;

/** A product's own trace: the tests put it under the name that the library calls. */
public final class Trace {
  private Trace() {}

  public static void nativeMethodEntry(String className, long object, String method, String[] arguments) {
    System.out.println("own entry " + className + " " + object + " " + method + " " + Arrays.toString(arguments));
  }

  public static void nativeMethodExit(String className, long object, String method, String result) {
    System.out.println("own exit " + className + " " + object + " " + method + " " + result);
  }

  public static void nativeMethodExit(String className, long object, String method) {
    Object shown = method; // so that a test can make the parameter an object and the method unknown to the library
    System.out.println("own exit " + className + " " + object + " " + shown);
  }

  public static void nativeMethodData(String className, String level, long object, String method, String[] data) {
    System.out.println("own data " + className + " " + level + "|" + object + " " + method + " " + Arrays.toString(data));
  }

  public static void nativeMethodThrowing(String className, long object, String method, String text) {
    System.out.println("own throw " + className + " " + object + " " + method + " " + text);
  }
}
