package com.kelvo.tessel.jni;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class LibrarySearchTest {
  @TempDir Path folder;
  private final List<String> loaded = new ArrayList<>();
  private Path first;
  private Path second;

  @BeforeEach
  void makeTwoLibraries() throws IOException {
    first = Files.createFile(folder.resolve("first.dll"));
    second = Files.createFile(folder.resolve("second.dll"));
  }

  @Test
  void theFirstPlaceThatLoadsIsTheLastOneLookedAt() {
    LibrarySearch.load(Arrays.asList(place("a", first), place("b", second)), loaded::add);
    assertEquals(Arrays.asList(first.toString()), loaded);
  }

  @Test
  void aMissingFileIsPassedOverWithoutLoading() {
    LibrarySearch.load(Arrays.asList(place("a", folder.resolve("none.dll")), place("b", second)), loaded::add);
    assertEquals(Arrays.asList(second.toString()), loaded);
  }

  @Test
  void aFolderIsNoLibrary() {
    LibrarySearch.load(Arrays.asList(place("a", folder), place("b", second)), loaded::add);
    assertEquals(Arrays.asList(second.toString()), loaded);
  }

  @Test
  void aLibraryThatDoesNotLoadIsPassedOver() {
    LibrarySearch.load(
        Arrays.asList(place("a", first), place("b", second)),
        path -> {
          if (path.equals(first.toString())) {
            throw new UnsatisfiedLinkError("wrong machine");
          }
          loaded.add(path);
        });
    assertEquals(Arrays.asList(second.toString()), loaded);
  }

  @Test
  void aRelativePathIsLoadedByItsAbsoluteOne() {
    Path relative = Paths.get("").toAbsolutePath().relativize(first);
    LibrarySearch.load(Arrays.asList(place("a", relative)), loaded::add);
    assertEquals(1, loaded.size());
    assertTrue(Paths.get(loaded.get(0)).isAbsolute());
  }

  @Test
  void theErrorListsEveryPlaceWithItsReason() {
    List<LibraryPlace> places =
        Arrays.asList(
            new LibraryPlace(
                "property x",
                () -> {
                  throw new IOException("not set");
                }),
            place("java.library.path", folder.resolve("none.dll")),
            place("beside the jar", first),
            new LibraryPlace(
                "inside the jar",
                () -> {
                  throw new IllegalArgumentException("odd name");
                }));
    UnsatisfiedLinkError error =
        assertThrows(
            UnsatisfiedLinkError.class,
            () ->
                LibrarySearch.load(
                    places,
                    path -> {
                      throw new UnsatisfiedLinkError("wrong machine");
                    }));
    assertEquals(
        "tesselnative.dll cannot be loaded. Looked at:"
            + "\n  property x: not set"
            + "\n  java.library.path: no such file: " + folder.resolve("none.dll")
            + "\n  beside the jar: wrong machine"
            + "\n  inside the jar: odd name",
        error.getMessage());
  }

  @Test
  void whereNativeAccessIsRestrictedTheErrorNamesTheOption() throws Exception {
    RuntimeException restricted =
        (RuntimeException)
            Class.forName("java.lang.IllegalCallerException")
                .getConstructor(String.class)
                .newInstance("Illegal native access");
    UnsatisfiedLinkError error =
        assertThrows(
            UnsatisfiedLinkError.class,
            () ->
                LibrarySearch.load(
                    Arrays.asList(place("beside the jar", first)),
                    path -> {
                      throw restricted;
                    }));
    assertEquals(
        "tesselnative.dll cannot be loaded. Looked at:"
            + "\n  beside the jar: Illegal native access"
            + "\nThis Java restricts native access. Start it with --enable-native-access=ALL-UNNAMED, or with"
            + " --enable-native-access=com.kelvo.tessel when the jar is on the module path.",
        error.getMessage());
  }

  private static LibraryPlace place(String name, Path file) {
    return new LibraryPlace(name, () -> file);
  }
}
