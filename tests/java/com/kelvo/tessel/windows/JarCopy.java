package com.kelvo.tessel.windows;

import com.kelvo.tessel.jni.NativeLibrary;
import java.io.IOException;
import java.io.InputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Collections;
import java.util.zip.ZipEntry;
import java.util.zip.ZipFile;
import java.util.zip.ZipOutputStream;

/** The jar under test with one entry less, or with a library. */
final class JarCopy {
  static final String LIBRARY = "com/kelvo/tessel/native/windows-x86_64/tesselnative.dll";

  private JarCopy() {}

  static void without(String left, Path copy) throws IOException {
    try (ZipOutputStream out = new ZipOutputStream(Files.newOutputStream(copy))) {
      addAllBut(left, out);
    }
  }

  static void with(Path library, Path copy) throws IOException {
    try (ZipOutputStream out = new ZipOutputStream(Files.newOutputStream(copy))) {
      addAllBut(LIBRARY, out);
      out.putNextEntry(new ZipEntry(LIBRARY));
      Files.copy(library, out);
    }
  }

  private static void addAllBut(String left, ZipOutputStream out) throws IOException {
    try (ZipFile original = new ZipFile(Folders.origin(NativeLibrary.class).toFile())) {
      for (ZipEntry entry : Collections.list(original.entries())) {
        if (!entry.getName().equals(left)) {
          out.putNextEntry(new ZipEntry(entry.getName()));
          copy(original.getInputStream(entry), out);
        }
      }
    }
  }

  private static void copy(InputStream from, ZipOutputStream to) throws IOException {
    byte[] block = new byte[8192];
    for (int length = from.read(block); length > 0; length = from.read(block)) {
      to.write(block, 0, length);
    }
    from.close();
  }
}
