package com.kelvo.tessel.jni;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.nio.file.attribute.UserPrincipal;
import java.util.stream.Stream;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class PrivateFolderTest {
  @TempDir Path temporary;
  private UserPrincipal user;

  @BeforeEach
  void askWhoIAm() throws IOException {
    user = Files.getOwner(temporary);
  }

  @Test
  void itLiesInTheLocalApplicationDataUnderTheNameOfTheUser() throws IOException {
    Path data = Files.createDirectory(temporary.resolve("data"));
    assertEquals(
        data.resolve("tessel-native-" + user.getName()),
        PrivateFolder.ofUser(data.toString(), temporary.toString()).prepare());
  }

  @Test
  void withoutLocalApplicationDataItLiesInTheTemporaryFolder() throws IOException {
    Path expected = temporary.resolve("tessel-native-" + user.getName());
    assertEquals(expected, PrivateFolder.ofUser(null, temporary.toString()).prepare());
    assertEquals(expected, PrivateFolder.ofUser("", temporary.toString()).prepare());
  }

  @Test
  void lookingForTheUserLeavesNothingBehind() throws IOException {
    PrivateFolder.ofUser(null, temporary.toString());
    try (Stream<Path> files = Files.list(temporary)) {
      assertEquals(0, files.count());
    }
  }

  @Test
  void itIsMadeForTheUserAlone() throws IOException {
    assertEquals("rwx------", permissions(new PrivateFolder(temporary.resolve("mine"), user).prepare()));
  }

  @Test
  void anExistingOneIsClosedToOthers() throws IOException {
    Path open = Files.createDirectory(temporary.resolve("open"));
    Files.setPosixFilePermissions(open, PosixFilePermissions.fromString("rwxrwxrwx"));
    new PrivateFolder(open, user).prepare();
    assertEquals("rwx------", permissions(open));
  }

  @Test
  void aLinkIsRefused() throws IOException {
    Path target = Files.createDirectory(temporary.resolve("target"));
    Path link = Files.createSymbolicLink(temporary.resolve("link"), target);
    assertRefused("not a folder, or a link to one: " + link, new PrivateFolder(link, user));
  }

  @Test
  void aFileIsRefused() throws IOException {
    Path file = Files.createFile(temporary.resolve("file"));
    assertRefused("not a folder, or a link to one: " + file, new PrivateFolder(file, user));
  }

  @Test
  void aFolderOfAnotherUserIsRefused() throws IOException {
    UserPrincipal other =
        temporary.getFileSystem().getUserPrincipalLookupService().lookupPrincipalByName("nobody");
    Path folder = Files.createDirectory(temporary.resolve("theirs"));
    assertRefused("the folder belongs to another user: " + folder, new PrivateFolder(folder, other));
  }

  @Test
  void newFilesHaveNamesOfTheirOwn() throws IOException {
    PrivateFolder folder = new PrivateFolder(temporary.resolve("mine"), user);
    folder.prepare();
    assertFalse(folder.newFile().equals(folder.newFile()));
  }

  private static void assertRefused(String reason, PrivateFolder folder) {
    assertEquals(reason, assertThrows(IOException.class, folder::prepare).getMessage());
  }

  private static String permissions(Path file) throws IOException {
    return PosixFilePermissions.toString(Files.getPosixFilePermissions(file));
  }
}
