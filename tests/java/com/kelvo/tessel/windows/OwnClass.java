package com.kelvo.tessel.windows;

import static java.nio.charset.StandardCharsets.ISO_8859_1;

import java.io.DataInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.zip.ZipFile;

/**
 * A class of the package com.kelvo.tessel.own as a class file under the name that the library calls. Names of the same
 * length are exchanged in its constants, so that nothing has to be compiled.
 */
final class OwnClass {
  private final String name;
  private String content;

  OwnClass(String simpleName, Path tests) throws IOException {
    name = "com/kelvo/tessel/ras/" + simpleName;
    String own = "com/kelvo/tessel/own/" + simpleName;
    try (ZipFile jar = new ZipFile(tests.toFile())) {
      InputStream stream = jar.getInputStream(jar.getEntry(own + ".class"));
      byte[] bytes = new byte[(int) jar.getEntry(own + ".class").getSize()];
      new DataInputStream(stream).readFully(bytes);
      content = new String(bytes, ISO_8859_1).replace(own, name);
    }
  }

  /** Exchanges a name or a descriptor. */
  OwnClass replace(String constant, String other) {
    if (constant.length() != other.length() || !content.contains(constant)) {
      throw new IllegalArgumentException(constant);
    }
    content = content.replace(constant, other);
    return this;
  }

  void writeInto(Path folder) throws IOException {
    Path file = folder.resolve(Paths.get(name + ".class"));
    Files.createDirectories(file.getParent());
    Files.write(file, content.getBytes(ISO_8859_1));
  }
}
