package com.kelvo.tessel.jni;

import java.io.IOException;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.Files;
import java.nio.file.Path;

/** Makes files that nobody else has. */
final class NewFile {
  private NewFile() {}

  /**
   * An empty file of a name that was free. It need not be hard to guess, and making it must not cost the start of the
   * system's random generator, as {@link Files#createTempFile} does.
   */
  static Path in(Path folder) throws IOException {
    for (long number = System.nanoTime(); ; number++) {
      try {
        return Files.createFile(folder.resolve("tesselnative-" + Long.toHexString(number) + ".tmp"));
      } catch (FileAlreadyExistsException taken) {
        // The next number may be free.
      }
    }
  }
}
