package com.kelvo.tessel.jni;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.logging.Logger;

/** Takes the first place whose library can be loaded. */
final class LibrarySearch {
  /** Loads the file of this absolute path, as {@link System#load} does. */
  interface Loader {
    void load(String path);
  }

  private final StringBuilder places = new StringBuilder();
  private boolean restricted;

  private LibrarySearch() {}

  static void load(List<LibraryPlace> candidates, Loader loader) {
    LibrarySearch search = new LibrarySearch();
    for (LibraryPlace place : candidates) {
      if (search.succeeds(place, loader)) {
        return;
      }
    }
    throw search.failure();
  }

  private boolean succeeds(LibraryPlace place, Loader loader) {
    try {
      Path file = place.file().toAbsolutePath();
      if (!Files.isRegularFile(file)) {
        return failed(place, "no such file: " + file);
      }
      loader.load(file.toString());
      Logger.getLogger(NativeLibrary.class.getName()).config("loaded " + file + "; looked before at:" + places);
      return true;
    } catch (IOException | RuntimeException | UnsatisfiedLinkError reason) {
      restricted |= reason.getClass().getName().equals("java.lang.IllegalCallerException"); // not in Java 8
      return failed(place, String.valueOf(reason.getMessage()));
    }
  }

  private boolean failed(LibraryPlace place, String reason) {
    places.append("\n  ").append(place.name()).append(": ").append(reason);
    return false;
  }

  private UnsatisfiedLinkError failure() {
    String option =
        "\nThis Java restricts native access. Start it with --enable-native-access=ALL-UNNAMED, or with"
            + " --enable-native-access=com.kelvo.tessel when the jar is on the module path.";
    return new UnsatisfiedLinkError(
        "tesselnative.dll cannot be loaded. Looked at:" + places + (restricted ? option : ""));
  }
}
