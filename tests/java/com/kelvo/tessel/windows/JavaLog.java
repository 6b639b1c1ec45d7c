package com.kelvo.tessel.windows;

import com.kelvo.tessel.jni.NativeJNI;
import java.io.IOException;
import java.text.MessageFormat;
import java.util.List;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.function.Predicate;
import java.util.logging.Handler;
import java.util.logging.Level;
import java.util.logging.LogRecord;
import java.util.logging.Logger;
import java.util.stream.Collectors;

/** Takes every record of this process as a line, until it is closed; then native trace is off as well. */
final class JavaLog extends Handler implements AutoCloseable {
  private final List<String> lines = new CopyOnWriteArrayList<>();
  private final Logger root = Logger.getLogger("");
  private final Level before = root.getLevel();
  private final Handler[] others = root.getHandlers();
  private volatile Runnable reaction = () -> {};

  JavaLog(String traceSpecification) throws IOException {
    for (Handler other : others) {
      root.removeHandler(other);
    }
    root.setLevel(Level.ALL);
    root.addHandler(this);
    NativeJNI.rasSetLevel(traceSpecification);
  }

  /** Done on the thread of each record, after it was taken. */
  void reactBy(Runnable action) {
    reaction = action;
  }

  List<String> lines(Predicate<String> wanted) {
    return lines.stream().filter(wanted).collect(Collectors.toList());
  }

  @Override
  public void publish(LogRecord record) {
    lines.add(line(record));
    reaction.run();
  }

  private static String line(LogRecord record) {
    Object[] values = record.getParameters();
    String text = values == null ? record.getMessage() : MessageFormat.format(record.getMessage(), values);
    String method = record.getSourceMethodName();
    return record.getLevel() + " " + record.getLoggerName() + (method == null ? "" : "." + method) + " " + text;
  }

  @Override
  public void flush() {}

  @Override
  public void close() {
    root.removeHandler(this);
    root.setLevel(before);
    for (Handler other : others) {
      root.addHandler(other);
    }
    try {
      NativeJNI.rasSetLevel("");
    } catch (IOException impossible) {
      throw new IllegalStateException(impossible);
    }
  }
}
