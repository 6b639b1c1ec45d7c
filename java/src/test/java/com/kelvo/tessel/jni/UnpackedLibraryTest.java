package com.kelvo.tessel.jni;

import static java.nio.charset.StandardCharsets.US_ASCII;
import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.attribute.FileTime;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.concurrent.CyclicBarrier;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class UnpackedLibraryTest {
  private static final byte[] CONTENT = "the library".getBytes(US_ASCII);
  private static final String NAME =
      "tesselnative-0ea2bff2393cf54f7adcc77a67a67a94d878e90b24b550f0f2fad783ecc78c4e.dll";

  @TempDir Path temporary;

  @Test
  void theNameHoldsTheHashOfTheContent() throws IOException {
    Path file = library().file();
    assertEquals(NAME, file.getFileName().toString());
    assertArrayEquals(CONTENT, Files.readAllBytes(file));
  }

  @Test
  void theFolderHasNothingElseAfterwards() throws IOException {
    assertEquals(Collections.singletonList(NAME), names(library().file().getParent()));
  }

  @Test
  void aGoodFileIsNotWrittenAgain() throws IOException {
    FileTime old = FileTime.fromMillis(1_000_000);
    Path file = library().file();
    Files.setLastModifiedTime(file, old);
    assertEquals(file, library().file());
    assertEquals(old, Files.getLastModifiedTime(file));
  }

  @Test
  void aTamperedFileIsReplaced() throws IOException {
    Path file = library().file();
    Files.write(file, "the libraRy".getBytes(US_ASCII));
    assertArrayEquals(CONTENT, Files.readAllBytes(library().file()));
  }

  @Test
  void aLinkIsReplacedByAFileAndItsTargetStays() throws IOException {
    Path elsewhere = Files.write(temporary.resolve("elsewhere"), CONTENT);
    Path file = folder().prepare().resolve(NAME);
    Files.createSymbolicLink(file, elsewhere);
    library().file();
    assertTrue(Files.isRegularFile(file, LinkOption.NOFOLLOW_LINKS));
    assertArrayEquals(CONTENT, Files.readAllBytes(elsewhere));
  }

  @Test
  void whatCannotBeReplacedIsAnErrorAndLeavesNothingBehind() throws IOException {
    Path obstacle = Files.createDirectory(folder().prepare().resolve(NAME));
    Files.createFile(obstacle.resolve("inside"));
    assertThrows(IOException.class, () -> library().file());
    assertEquals(Collections.singletonList(NAME), names(obstacle.getParent()));
  }

  @Test
  void manyUnpackAtOnce() throws Exception {
    int count = 16;
    CyclicBarrier start = new CyclicBarrier(count);
    ExecutorService threads = Executors.newFixedThreadPool(count);
    List<Future<Path>> files = new ArrayList<>();
    for (int i = 0; i < count; i++) {
      files.add(
          threads.submit(
              () -> {
                start.await();
                return library().file();
              }));
    }
    for (Future<Path> file : files) {
      assertArrayEquals(CONTENT, Files.readAllBytes(file.get()));
    }
    threads.shutdown();
    assertEquals(Collections.singletonList(NAME), names(files.get(0).get().getParent()));
  }

  private UnpackedLibrary library() throws IOException {
    return new UnpackedLibrary(CONTENT, folder());
  }

  private PrivateFolder folder() throws IOException {
    return PrivateFolder.ofUser(null, temporary.toString());
  }

  private static List<String> names(Path folder) throws IOException {
    try (Stream<Path> files = Files.list(folder)) {
      return files.map(file -> file.getFileName().toString()).sorted().collect(Collectors.toList());
    }
  }
}
