package com.kelvo.tessel.ras;

import java.util.logging.Level;
import java.util.logging.LogRecord;

/**
 * The method trace of the native library. Each record goes to the logger of {@code java.util.logging} that is named after
 * the native class behind the prefix of trace specifications, those of the messaging bindings to
 * {@code com.kelvo.tessel.ipc.IPCClient} and {@code com.kelvo.tessel.ipc.IPCServer}: entry, exit and exception at {@link Level#FINER}, data at
 * its own level. Parameter 0 of a record is the address of the native object, or {@code static}; the arguments follow.
 * Escapes {@code \}{@code uXXXX} become characters.
 *
 * <p>Called from native code, on any thread, for what {@link com.kelvo.tessel.jni.NativeJNI#rasSetLevel} has switched on;
 * nothing is thrown. What a log handler itself causes on its thread while it handles a record is dropped.
 *
 * <p>A product can put its own class of this name, with the same five methods, earlier on the class path: the native
 * library calls that one.
 */
public final class Trace {
  private static final NativeRecords RECORDS = new NativeRecords();
  private static final String[] NOTHING = {};

  private Trace() {}

  /**
   * A method begins.
   *
   * @param className the native class
   * @param object address of the native object, 0 for a class operation
   * @param method the method and "(Native Method)"
   * @param arguments as text
   */
  public static void nativeMethodEntry(String className, long object, String method, String[] arguments) {
    publish(className, Level.FINER, method, "ENTRY", object, arguments);
  }

  /**
   * A method returns a value.
   *
   * @param className the native class
   * @param object address of the native object, 0 for a class operation
   * @param method the method and "(Native Method)"
   * @param result as text
   */
  public static void nativeMethodExit(String className, long object, String method, String result) {
    publish(className, Level.FINER, method, "RETURN", object, new String[] {result});
  }

  /**
   * A method returns.
   *
   * @param className the native class
   * @param object address of the native object, 0 for a class operation
   * @param method the method and "(Native Method)"
   */
  public static void nativeMethodExit(String className, long object, String method) {
    publish(className, Level.FINER, method, "RETURN", object, NOTHING);
  }

  /**
   * A data point.
   *
   * @param className the native class
   * @param level name of the level, blanks around it do not count; what is no level of trace counts as FINEST
   * @param object address of the native object, 0 for a class operation
   * @param method the method and "(Native Method)"
   * @param data as text
   */
  public static void nativeMethodData(String className, String level, long object, String method, String[] data) {
    publish(className, level(level), method, "DATA", object, data);
  }

  /**
   * A method throws.
   *
   * @param className the native class
   * @param object address of the native object, 0 for a class operation
   * @param method the method and "(Native Method)"
   * @param text the exception as text
   */
  public static void nativeMethodThrowing(String className, long object, String method, String text) {
    publish(className, Level.FINER, method, "THROW", object, new String[] {text});
  }

  private static Level level(String name) {
    switch (name == null ? "" : name.trim()) {
      case "FINE":
        return Level.FINE;
      case "FINER":
        return Level.FINER;
      default:
        return Level.FINEST;
    }
  }

  private static void publish(
      String className, Level level, String method, String kind, long object, String[] values) {
    RECORDS.publish(className, level, () -> record(level, method, kind, object, values == null ? NOTHING : values));
  }

  private static LogRecord record(Level level, String method, String kind, long object, String[] values) {
    StringBuilder message = new StringBuilder(kind).append(" {0}");
    Object[] parameters = new Object[values.length + 1];
    parameters[0] = object == 0 ? "static" : String.format("@%016x", object);
    for (int i = 1; i <= values.length; i++) {
      message.append(" {").append(i).append('}');
      parameters[i] = NativeRecords.decode(values[i - 1]);
    }
    LogRecord record = new LogRecord(level, message.toString());
    record.setSourceMethodName(method);
    record.setParameters(parameters);
    return record;
  }
}
