package com.kelvo.tessel.windows;

import com.kelvo.tessel.jni.NativeJNI;
import com.kelvo.tessel.jni.NativeLibrary;
import java.util.logging.Handler;
import java.util.logging.Level;
import java.util.logging.LogRecord;
import java.util.logging.Logger;

/** Loads the library, prints where from, and uses it. */
final class LoadingProgram {
  private LoadingProgram() {}

  public static void main(String[] arguments) throws Exception {
    Logger logger = Logger.getLogger(NativeLibrary.class.getName());
    logger.setUseParentHandlers(false);
    logger.setLevel(Level.CONFIG);
    logger.addHandler(new Printer());
    try {
      NativeLibrary.load();
      System.out.println("used: " + NativeJNI.doesCurrentUserHaveSpecialAuthority("any"));
    } catch (UnsatisfiedLinkError error) {
      System.out.println(error.getMessage());
    }
  }

  private static final class Printer extends Handler {
    @Override
    public void publish(LogRecord record) {
      System.out.println(record.getMessage());
    }

    @Override
    public void flush() {}

    @Override
    public void close() {}
  }
}
