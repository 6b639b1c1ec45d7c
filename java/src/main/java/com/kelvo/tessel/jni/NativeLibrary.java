package com.kelvo.tessel.jni;

import java.io.IOException;
import java.nio.file.Paths;
import java.util.logging.Level;
import java.util.logging.Logger;

/**
 * Loads {@code tesselnative.dll}, once in a process, and connects its diagnostics with this process. The first use of any
 * native class does it; a program that wants the error early calls {@link #load()}.
 *
 * <p>The library is looked for in this order: the file that the system property {@value #PATH} names; the folders of
 * {@code java.library.path}; the folder of this jar; the copy inside this jar, which is unpacked to a folder that only the
 * current user can reach.
 */
public final class NativeLibrary {
  /** System property: the path of the DLL. */
  public static final String PATH = "com.kelvo.tessel.native.path";

  /** System property: where native failure captures go. Default: {@code tessel-native/logs} in {@code java.io.tmpdir}. */
  public static final String LOG_DIRECTORY = "com.kelvo.tessel.native.logdir";

  /** System property: the prefix of the names in a trace specification. Default: {@code com.kelvo.tessel.nativ}. */
  public static final String TRACE_PREFIX = "com.kelvo.tessel.native.traceprefix";

  /**
   * System property: a trace specification that holds from the moment the library is loaded, as {@link
   * NativeJNI#rasSetLevel} takes it. Default: no trace.
   */
  public static final String TRACE = "com.kelvo.tessel.native.trace";

  private NativeLibrary() {}

  /**
   * Loads the library unless it is loaded. Any thread.
   *
   * @throws UnsatisfiedLinkError with every place that was looked at and what was wrong there; a second attempt in the same
   *     process is a {@link NoClassDefFoundError}
   */
  public static void load() {
    // All loading is done by that class's initialiser: a second lock here could be taken in the other order.
    NativeJNI.touch();
  }

  /** For the initialiser of NativeJNI only. */
  static void loadAndInitialise() {
    Platform.require(System.getProperty("os.name"), System.getProperty("os.arch"));
    LibrarySearch.load(LibraryPlaces.inOrder(), System::load);
    String logs = Paths.get(System.getProperty("java.io.tmpdir"), "tessel-native", "logs").toString();
    try {
      NativeJNI.rasInitialize(
          System.getProperty(LOG_DIRECTORY, logs), System.getProperty(TRACE_PREFIX, "com.kelvo.tessel.nativ"));
      String trace = System.getProperty(TRACE);
      if (trace != null) {
        NativeJNI.rasSetLevel(trace);
      }
    } catch (IOException | RuntimeException failure) {
      // The library works without them.
      Logger.getLogger(NativeLibrary.class.getName()).log(Level.WARNING, "no native diagnostics", failure);
    }
  }
}
