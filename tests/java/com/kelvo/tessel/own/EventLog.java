package com.kelvo.tessel.own;

/** A product's own event log: the tests put it under the name that the library calls. */
public final class EventLog {
  private EventLog() {}

  public static void infoNoFormat(String className, String text) {
    System.out.println("own INFO " + className + " " + text);
  }

  public static void warningNoFormat(String className, String text) {
    System.out.println("own WARN " + className + " " + text);
  }

  public static void errorNoFormat(String className, String text) {
    System.out.println("own ERROR " + className + " " + text);
  }

  public static void configNoFormat(String className, String text) {
    System.out.println("own CONFIG " + className + " " + text);
  }
}
