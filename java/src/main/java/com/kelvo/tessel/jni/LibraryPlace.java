package com.kelvo.tessel.jni;

import java.io.IOException;
import java.nio.file.Path;

/** A place where the library may be. */
final class LibraryPlace {
  /** Names the file, after it was made if need be. */
  interface Source {
    Path file() throws IOException;
  }

  private final String name;
  private final Source source;

  LibraryPlace(String name, Source source) {
    this.name = name;
    this.source = source;
  }

  /** For the error text. */
  String name() {
    return name;
  }

  /** The file need not exist. An exception's message says why there cannot be one. */
  Path file() throws IOException {
    return source.file();
  }
}
