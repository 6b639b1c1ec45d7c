package com.kelvo.tessel.jni;

import java.io.IOException;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.nio.file.attribute.BasicFileAttributes;
import java.nio.file.attribute.UserPrincipal;

/** A folder that belongs to one user, who alone can reach it. */
final class PrivateFolder {
  private final Path path;
  private final UserPrincipal user;
  private final OwnerOnly access;

  PrivateFolder(Path path, UserPrincipal user) {
    this.path = path;
    this.user = user;
    this.access = OwnerOnly.of(path.getFileSystem(), user);
  }

  /**
   * The current user's, under the local application data, else in the temporary folder. Its name holds the user's name as
   * the file system has it: files of an administrator's process may belong to the group.
   */
  static PrivateFolder ofUser(String localData, String temporary) throws IOException {
    UserPrincipal user = currentUser(Paths.get(temporary));
    String name = "tessel-native-" + user.getName().replaceAll("[^A-Za-z0-9._-]", "_");
    boolean noData = localData == null || localData.isEmpty();
    return new PrivateFolder(Paths.get(noData ? temporary : localData, name), user);
  }

  private static UserPrincipal currentUser(Path temporary) throws IOException {
    Path probe = NewFile.in(temporary);
    try {
      return Files.getOwner(probe);
    } finally {
      Files.delete(probe);
    }
  }

  /** Makes the folder, refuses one that is a link or somebody else's, and closes it to all others. */
  Path prepare() throws IOException {
    try {
      Files.createDirectory(path, access.whenMade());
    } catch (FileAlreadyExistsException exists) {
      // Looked at like one that was made.
    }
    BasicFileAttributes kind = Files.readAttributes(path, BasicFileAttributes.class, LinkOption.NOFOLLOW_LINKS);
    // A junction is a directory that is also "other".
    if (!kind.isDirectory() || kind.isOther()) {
      throw new IOException("not a folder, or a link to one: " + path);
    }
    if (!isOwn(path)) {
      throw new IOException("the folder belongs to another user: " + path);
    }
    access.set(path);
    return path;
  }

  boolean isOwn(Path file) throws IOException {
    return Files.getOwner(file, LinkOption.NOFOLLOW_LINKS).equals(user);
  }

  /** An empty file of a name that no other process uses. */
  Path newFile() throws IOException {
    return NewFile.in(path);
  }
}
