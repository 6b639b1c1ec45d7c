package com.kelvo.tessel.ras;

import java.util.function.Supplier;
import java.util.logging.ErrorManager;
import java.util.logging.Level;
import java.util.logging.LogRecord;
import java.util.logging.Logger;

/**
 * The way of native records into {@code java.util.logging}. It never throws, since its callers are native, and it lets no
 * log handler that calls native code feed itself: what a handler causes on its own thread is dropped.
 */
final class NativeRecords {
  private static final int ESCAPE = 6; // backslash, u, four digits

  /** Says the first failure on standard error and keeps quiet about the others. */
  private final ErrorManager failures = new ErrorManager();

  private final ThreadLocal<Boolean> publishing = new ThreadLocal<>();

  /** Makes the record only when its logger takes the level. */
  void publish(String logger, Level level, Supplier<LogRecord> record) {
    if (publishing.get() != null) {
      return;
    }
    try {
      publishing.set(Boolean.TRUE);
      Logger target = Logger.getLogger(logger);
      if (target.isLoggable(level)) {
        target.log(named(record.get(), logger));
      }
    } catch (Throwable failure) {
      report(failure);
    } finally {
      publishing.remove();
    }
  }

  private static LogRecord named(LogRecord record, String logger) {
    record.setLoggerName(logger);
    record.setSourceClassName(logger);
    return record;
  }

  private void report(Throwable failure) {
    try {
      failures.error("a log handler failed: " + failure, new Exception(failure), ErrorManager.WRITE_FAILURE);
    } catch (Throwable again) {
      // There is nobody left to tell.
    }
  }

  /** Replaces each backslash, u and four hexadecimal digits by the character; everything else stays. */
  static String decode(String text) {
    int escape = text == null ? -1 : text.indexOf("\\u");
    if (escape < 0) {
      return text;
    }
    StringBuilder decoded = new StringBuilder(text.length());
    int done = 0;
    while (escape >= 0) {
      int character = hexadecimal(text, escape + 2);
      if (character >= 0) {
        decoded.append(text, done, escape).append((char) character);
        done = escape + ESCAPE;
      }
      escape = text.indexOf("\\u", character >= 0 ? done : escape + 2);
    }
    return decoded.append(text, done, text.length()).toString();
  }

  private static int hexadecimal(String text, int start) {
    if (text.length() < start + 4) {
      return -1;
    }
    int value = 0;
    for (int i = start; i < start + 4; i++) {
      char digit = text.charAt(i);
      int number = digit < 128 ? Character.digit(digit, 16) : -1; // other scripts have digits, too
      if (number < 0) {
        return -1;
      }
      value = value * 16 + number;
    }
    return value;
  }
}
