package com.kelvo.tessel.jni;

import java.io.IOException;
import java.nio.file.FileSystem;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.attribute.AclEntry;
import java.nio.file.attribute.AclEntryFlag;
import java.nio.file.attribute.AclEntryPermission;
import java.nio.file.attribute.AclEntryType;
import java.nio.file.attribute.FileAttribute;
import java.nio.file.attribute.PosixFilePermissions;
import java.nio.file.attribute.UserPrincipal;
import java.util.Collections;
import java.util.EnumSet;
import java.util.List;

/** Access to a folder for its owner alone, in the form of the file system. */
final class OwnerOnly {
  private final FileAttribute<?> attribute;

  private OwnerOnly(FileAttribute<?> attribute) {
    this.attribute = attribute;
  }

  static OwnerOnly of(FileSystem system, UserPrincipal owner) {
    return new OwnerOnly(
        system.supportedFileAttributeViews().contains("posix")
            ? PosixFilePermissions.asFileAttribute(PosixFilePermissions.fromString("rwx------"))
            : new AccessList(owner));
  }

  FileAttribute<?> whenMade() {
    return attribute;
  }

  void set(Path folder) throws IOException {
    Files.setAttribute(folder, attribute.name(), attribute.value(), LinkOption.NOFOLLOW_LINKS);
  }

  /** One entry, which files in the folder inherit. */
  private static final class AccessList implements FileAttribute<List<AclEntry>> {
    private final List<AclEntry> entries;

    AccessList(UserPrincipal owner) {
      entries =
          Collections.singletonList(
              AclEntry.newBuilder()
                  .setType(AclEntryType.ALLOW)
                  .setPrincipal(owner)
                  .setPermissions(EnumSet.allOf(AclEntryPermission.class))
                  .setFlags(AclEntryFlag.FILE_INHERIT, AclEntryFlag.DIRECTORY_INHERIT)
                  .build());
    }

    @Override
    public String name() {
      return "acl:acl";
    }

    @Override
    public List<AclEntry> value() {
      return entries;
    }
  }
}
