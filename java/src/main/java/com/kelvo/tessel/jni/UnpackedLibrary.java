package com.kelvo.tessel.jni;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.Arrays;

/**
 * The library out of the jar, as a file. Its name holds the hash of its content, so that two versions never meet; several
 * processes may unpack at once. A file is believed only after it was read again and is the user's own.
 */
final class UnpackedLibrary {
  private final byte[] content;
  private final PrivateFolder folder;

  UnpackedLibrary(byte[] content, PrivateFolder folder) {
    this.content = content;
    this.folder = folder;
  }

  Path file() throws IOException {
    Path file = folder.prepare().resolve("tesselnative-" + Bytes.sha256(content) + ".dll");
    if (!isGood(file)) {
      write(file);
      if (!isGood(file)) {
        throw new IOException("changed while it was unpacked: " + file);
      }
    }
    return file;
  }

  private boolean isGood(Path file) throws IOException {
    return Files.isRegularFile(file, LinkOption.NOFOLLOW_LINKS)
        && folder.isOwn(file)
        && Arrays.equals(Files.readAllBytes(file), content);
  }

  private void write(Path file) throws IOException {
    Path fresh = folder.newFile();
    try {
      Files.write(fresh, content);
      Files.move(fresh, file, StandardCopyOption.ATOMIC_MOVE, StandardCopyOption.REPLACE_EXISTING);
    } catch (IOException failure) {
      // A process that has loaded the file meanwhile keeps it from being replaced; then it is there already.
      if (!isGood(file)) {
        throw failure;
      }
    } finally {
      Files.deleteIfExists(fresh);
    }
  }
}
