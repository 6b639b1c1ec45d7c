package com.kelvo.tessel.windows;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;

import com.kelvo.tessel.jni.NativeLibrary;
import java.io.IOException;
import java.io.InputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import java.util.zip.ZipEntry;
import java.util.zip.ZipFile;
import java.util.zip.ZipOutputStream;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The loader in a process of its own for each place where the library can be. */
class LoaderTest {
  private static final String RESOURCE = "com/kelvo/tessel/native/windows-x86_64/tesselnative.dll";

  @TempDir(factory = Folders.Fresh.class)
  Path folder;

  private Path jar;
  private Path data;
  private Path empty;

  @BeforeEach
  void makeJarWithoutLibrary() throws IOException {
    jar = copyOfJar("lib/tessel-native.jar", null);
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
    jar = copyOfJar("full/tessel-native.jar", Folders.library());
    Path found = putLibraryInto(jar.getParent());
    assertEquals(
        "loaded " + found + "; looked before at:" + notSet() + notInSearchPath() + "\nused: false\n", run(child()));
  }

  @Test
  void theLibraryInsideTheJarComesLastAndIsUnpackedOnce() throws Exception {
    jar = copyOfJar("full/tessel-native.jar", Folders.library());
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
    jar = copyOfJar("full/tessel-native.jar", Folders.library());
    run(child());
    Path unpacked = onlyUnpackedFile();
    Files.write(unpacked, new byte[] {'M', 'Z'});
    assertEquals(true, run(child()).endsWith("\nused: false\n"));
    assertArrayEquals(Files.readAllBytes(Folders.library()), Files.readAllBytes(onlyUnpackedFile()));
  }

  @Test
  void processesThatUnpackAtOnceAllLoad() throws Exception {
    jar = copyOfJar("full/tessel-native.jar", Folders.library());
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

  /** The jar under test without a library, or with that one. */
  private Path copyOfJar(String name, Path library) throws IOException {
    Path copy = folder.resolve(Paths.get(name));
    Files.createDirectories(copy.getParent());
    try (ZipFile original = new ZipFile(Folders.origin(NativeLibrary.class).toFile());
        ZipOutputStream changed = new ZipOutputStream(Files.newOutputStream(copy))) {
      for (ZipEntry entry : original.stream().collect(Collectors.toList())) {
        if (!entry.getName().equals(RESOURCE)) {
          changed.putNextEntry(new ZipEntry(entry.getName()));
          copyAll(original.getInputStream(entry), changed);
        }
      }
      if (library != null) {
        changed.putNextEntry(new ZipEntry(RESOURCE));
        Files.copy(library, changed);
      }
    }
    return copy;
  }

  private static void copyAll(InputStream from, ZipOutputStream to) throws IOException {
    byte[] block = new byte[8192];
    for (int length = from.read(block); length > 0; length = from.read(block)) {
      to.write(block, 0, length);
    }
    from.close();
  }
}
