package com.kelvo.tessel.windows;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;

import com.kelvo.tessel.jni.NativeLibrary;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The loader in a process of its own for each place where the library can be. */
class LoaderTest {
  @TempDir(factory = Folders.Fresh.class)
  Path folder;

  private Path jar;
  private Path data;
  private Path empty;

  @BeforeEach
  void makeJarWithoutLibrary() throws IOException {
    jar = Files.createDirectories(folder.resolve("lib")).resolve("tessel-native.jar");
    JarCopy.without(JarCopy.LIBRARY, jar);
    data = Files.createDirectories(folder.resolve("data"));
    empty = Files.createDirectories(folder.resolve("empty"));
  }

  @Test
  void theExplicitPathComesFirst() throws Exception {
    putLibraryInto(empty);
    Path explicit = Files.copy(Folders.library(), folder.resolve("mine.dll"));
    assertEquals(
        "loaded " + explicit + "; looked before at:\nused: false\n",
        run(child().property(NativeLibrary.PATH, explicit)));
  }

  @Test
  void theSearchPathComesSecond() throws Exception {
    putLibraryInto(jar.getParent());
    Path found = putLibraryInto(empty);
    assertEquals("loaded " + found + "; looked before at:" + notSet() + "\nused: false\n", run(child()));
  }

  @Test
  void theFolderOfTheJarComesThird() throws Exception {
    jar = jarWithLibrary();
    Path found = putLibraryInto(jar.getParent());
    assertEquals(
        "loaded " + found + "; looked before at:" + notSet() + notInSearchPath() + "\nused: false\n", run(child()));
  }

  @Test
  void theLibraryInsideTheJarComesLastAndIsUnpackedOnce() throws Exception {
    jar = jarWithLibrary();
    String first = run(child());
    Path unpacked = onlyUnpackedFile();
    assertArrayEquals(Files.readAllBytes(Folders.library()), Files.readAllBytes(unpacked));
    String expected =
        "loaded " + unpacked + "; looked before at:" + notSet() + notInSearchPath() + notBesideJar() + "\nused: false\n";
    assertEquals(expected, first);
    assertEquals(expected, run(child()));
    assertEquals(unpacked, onlyUnpackedFile());
  }

  @Test
  void anUnpackedFileThatWasChangedIsReplacedBeforeItIsLoaded() throws Exception {
    jar = jarWithLibrary();
    run(child());
    Path unpacked = onlyUnpackedFile();
    Files.write(unpacked, new byte[] {'M', 'Z'});
    assertEquals(true, run(child()).endsWith("\nused: false\n"));
    assertArrayEquals(Files.readAllBytes(Folders.library()), Files.readAllBytes(onlyUnpackedFile()));
  }

  @Test
  void processesThatUnpackAtOnceAllLoad() throws Exception {
    jar = jarWithLibrary();
    List<ChildJVM> children = new ArrayList<>();
    for (int i = 0; i < 4; i++) {
      children.add(child().start());
    }
    for (ChildJVM child : children) {
      assertEquals(true, child.join().output().endsWith("\nused: false\n"), child.output());
    }
    onlyUnpackedFile();
  }

  @Test
  void withoutAnyLibraryTheErrorListsEveryPlace() throws Exception {
    assertEquals(
        "tesselnative.dll cannot be loaded. Looked at:" + notSet() + notInSearchPath() + notBesideJar()
            + "\n  inside the jar: this jar was built without the library\n",
        run(child()));
  }

  @Test
  void aFileThatIsNoLibraryIsPassedOver() throws Exception {
    Path broken = Files.write(folder.resolve("broken.dll"), "no library".getBytes());
    Path found = putLibraryInto(empty);
    String output = run(child().property(NativeLibrary.PATH, broken));
    String start = "loaded " + found + "; looked before at:\n  property com.kelvo.tessel.native.path: " + broken + ": ";
    assertEquals(start, output.substring(0, start.length()));
  }

  private ChildJVM child() throws IOException {
    return new ChildJVM(LoadingProgram.class)
        .classPath(jar, Folders.origin(LoadingProgram.class))
        .property("java.library.path", empty)
        .environment("LOCALAPPDATA", data);
  }

  private static String run(ChildJVM child) throws IOException, InterruptedException {
    String output = child.start().join().output();
    assertEquals(0, child.exitCode(), output);
    return output;
  }

  private static String notSet() {
    return "\n  property com.kelvo.tessel.native.path: not set";
  }

  private String notInSearchPath() {
    return "\n  java.library.path: no such file: " + empty.resolve("tesselnative.dll");
  }

  private String notBesideJar() {
    return "\n  beside the jar: no such file: " + jar.resolveSibling("tesselnative.dll");
  }

  private static Path putLibraryInto(Path into) throws IOException {
    return Files.copy(Folders.library(), into.resolve("tesselnative.dll"));
  }

  private Path onlyUnpackedFile() throws IOException {
    try (Stream<Path> files = Files.walk(data)) {
      List<Path> found = files.filter(Files::isRegularFile).collect(Collectors.toList());
      assertEquals(1, found.size(), found::toString);
      return found.get(0);
    }
  }

  private Path jarWithLibrary() throws IOException {
    Path full = Files.createDirectories(folder.resolve("full")).resolve("tessel-native.jar");
    JarCopy.with(Folders.library(), full);
    return full;
  }
}
