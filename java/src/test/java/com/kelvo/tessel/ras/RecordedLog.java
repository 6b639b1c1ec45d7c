package com.kelvo.tessel.ras;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.logging.Handler;
import java.util.logging.Level;
import java.util.logging.LogRecord;
import java.util.logging.Logger;

/** Takes everything that reaches one logger, until it is closed; each record as one line. */
final class RecordedLog extends Handler {
  private final List<String> lines = new ArrayList<>();
  private final Logger logger;
  private Runnable reaction = () -> {};

  RecordedLog(String name) {
    logger = Logger.getLogger(name);
    logger.setUseParentHandlers(false);
    logger.setLevel(Level.ALL);
    logger.addHandler(this);
  }

  void setLevel(String level) {
    logger.setLevel(Level.parse(level));
  }

  /** Done on the thread of each record, after it was taken. */
  void reactBy(Runnable action) {
    reaction = action;
  }

  List<String> lines() {
    return lines;
  }

  @Override
  public void publish(LogRecord record) {
    String parameters = record.getParameters() == null ? "" : " " + Arrays.toString(record.getParameters());
    lines.add(
        record.getLevel() + " " + record.getLoggerName() + " " + record.getSourceClassName() + "."
            + record.getSourceMethodName() + " " + record.getMessage() + parameters);
    reaction.run();
  }

  @Override
  public void flush() {}

  @Override
  public void close() {
    logger.removeHandler(this);
    logger.setLevel(null);
    logger.setUseParentHandlers(true);
  }
}
