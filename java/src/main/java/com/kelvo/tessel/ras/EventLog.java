package com.kelvo.tessel.ras;

import java.util.logging.Level;
import java.util.logging.LogRecord;

/**
 * The operator's events of the native library. Each goes to the logger of {@code java.util.logging} that is named after the
 * native class, without any prefix; escapes {@code \}{@code uXXXX} in the text become characters.
 *
 * <p>Called from native code, on any thread; nothing is thrown. What a log handler itself causes on its thread while it
 * handles an event is dropped.
 *
 * <p>A product can put its own class of this name, with the same four methods, earlier on the class path: the native
 * library calls that one.
 */
public final class EventLog {
  private static final NativeRecords RECORDS = new NativeRecords();

  private EventLog() {}

  /**
   * An information, at {@link Level#INFO}.
   *
   * @param className the native class
   * @param text the complete message
   */
  public static void infoNoFormat(String className, String text) {
    log(className, Level.INFO, text);
  }

  /**
   * A warning, at {@link Level#WARNING}.
   *
   * @param className the native class
   * @param text the complete message
   */
  public static void warningNoFormat(String className, String text) {
    log(className, Level.WARNING, text);
  }

  /**
   * An error, at {@link Level#SEVERE}.
   *
   * @param className the native class
   * @param text the complete message
   */
  public static void errorNoFormat(String className, String text) {
    log(className, Level.SEVERE, text);
  }

  /**
   * A note on the configuration, at {@link Level#CONFIG}.
   *
   * @param className the native class
   * @param text the complete message
   */
  public static void configNoFormat(String className, String text) {
    log(className, Level.CONFIG, text);
  }

  private static void log(String className, Level level, String text) {
    RECORDS.publish(className, level, () -> new LogRecord(level, NativeRecords.decode(text)));
  }
}
