package com.kelvo.tessel.windows;

import java.io.IOException;
import java.lang.management.ManagementFactory;
import java.net.URISyntaxException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.concurrent.atomic.AtomicInteger;
import org.junit.jupiter.api.extension.AnnotatedElementContext;
import org.junit.jupiter.api.extension.ExtensionContext;
import org.junit.jupiter.api.io.TempDirFactory;

/** Names and files of this process only. */
final class Folders {
  private static final AtomicInteger NEXT = new AtomicInteger();

  private Folders() {}

  /** A name for a service that no other process and no other test uses. */
  static String uniqueName(String purpose) {
    String process = ManagementFactory.getRuntimeMXBean().getName().replaceAll("[^0-9A-Za-z]", "-");
    return purpose + "-" + process + "-" + NEXT.incrementAndGet();
  }

  /** An empty file that goes with this process. Its name is not random: see {@link Fresh}. */
  static Path emptyFile(String purpose) throws IOException {
    Path file = Files.createFile(Paths.get(System.getProperty("java.io.tmpdir"), uniqueName(purpose)));
    file.toFile().deleteOnExit();
    return file;
  }

  /**
   * Gives temporary folders names that need no random generator: Java's own start of it warns under checked JNI on
   * machines with many network adapters.
   */
  static final class Fresh implements TempDirFactory {
    @Override
    public Path createTempDirectory(AnnotatedElementContext element, ExtensionContext context) throws IOException {
      return Files.createDirectory(Paths.get(System.getProperty("java.io.tmpdir"), uniqueName("test")));
    }
  }

  /** The library under test. */
  static Path library() {
    return Paths.get(System.getProperty("com.kelvo.tessel.native.path"));
  }

  /** The jar or folder that a class was loaded from. */
  static Path origin(Class<?> type) {
    try {
      return Paths.get(type.getProtectionDomain().getCodeSource().getLocation().toURI());
    } catch (URISyntaxException impossible) {
      throw new IllegalStateException(impossible);
    }
  }
}
