package com.kelvo.tessel.windows;

import static org.junit.jupiter.api.Assertions.assertDoesNotThrow;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.kelvo.tessel.jni.FilePermissionsException;
import com.kelvo.tessel.jni.NativeJNI;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Nested;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

/** Every exception of file security and group checks, without trace and with everything traced. */
class FileSecurityTest {
  @Nested
  class WithoutTrace extends Mappings {
    WithoutTrace() {
      super("");
    }
  }

  @Nested
  class WithEverythingTraced extends Mappings {
    WithEverythingTraced() {
      super("=ALL");
    }
  }

  abstract static class Mappings {
    @TempDir(factory = Folders.Fresh.class)
    Path folder;

    private final String traceSpecification;
    private JavaLog log;
    private Path file;
    private Path missing;

    Mappings(String traceSpecification) {
      this.traceSpecification = traceSpecification;
    }

    @BeforeEach
    void begin() throws IOException {
      log = new JavaLog(traceSpecification);
      file = Files.createFile(folder.resolve("file"));
      missing = folder.resolve("missing");
    }

    @AfterEach
    void end() {
      log.close();
    }

    @Test
    void aSecuredFilePassesTheCheck() throws IOException {
      NativeJNI.mkpriv(file.toString(), false, false);
      assertDoesNotThrow(() -> NativeJNI.checkFilePermissions(file.toString()));
    }

    @Test
    void aFileThatEveryoneMayReadDoesNotPass() throws IOException {
      NativeJNI.mkpriv(file.toString(), true, false);
      assertFails(
          FilePermissionsException.class,
          "KTBNV0145E: The group 'Everyone' has access to '" + file + "'.",
          () -> NativeJNI.checkFilePermissions(file.toString()));
    }

    @Test
    void aFileThatTheGroupAdministersIsReadByEveryone() throws IOException {
      NativeJNI.mkGroupOmniWrite(file.toString(), false);
      assertFails(
          FilePermissionsException.class,
          "KTBNV0145E: The group 'Everyone' has access to '" + file + "'.",
          () -> NativeJNI.checkFilePermissions(file.toString()));
    }

    @Test
    void aMissingFileCannotBeChecked() {
      assertFailsWith(
          FilePermissionsException.class,
          "KTBNV0139E: Unable to determine the size of the access control list of '" + missing + "'. System text: ",
          () -> NativeJNI.checkFilePermissions(missing.toString()));
    }

    @Test
    void noFileCannotBeChecked() {
      assertFails(
          FilePermissionsException.class,
          "KTBNV0167E: The permissions of a file cannot be checked because no path was given.",
          () -> NativeJNI.checkFilePermissions(null));
    }

    @Test
    void aMissingFileCannotBeSecured() {
      String text = "KTBNV0031E: Unable to set the access control list of '" + missing + "'. System text: ";
      assertFailsWith(IOException.class, text, () -> NativeJNI.mkpriv(missing.toString(), true, true));
      assertFailsWith(IOException.class, text, () -> NativeJNI.mkGroupOmniWrite(missing.toString(), true));
    }

    @Test
    void modeBitsAreNotSupported() {
      assertFails(
          UnsupportedOperationException.class,
          "KTBNV0020E: Changing the mode bits of a file is not supported on this platform.",
          () -> NativeJNI.chmod(file.toString(), 0600));
    }

    @Test
    void otherGroupsAreNotSupported() {
      assertFails(
          IOException.class,
          "NYXUtils::mkGroupWrite not implemented",
          () -> NativeJNI.mkGroupWrite(file.toString(), "Users", true));
    }

    @Test
    void groupsOfTheCurrentUser() throws IOException {
      assertTrue(NativeJNI.isCurrentUserMemberOfGroup("Everyone"));
      assertFalse(NativeJNI.isCurrentUserMemberOfGroup("everyone"));
      assertFalse(NativeJNI.isCurrentUserMemberOfGroup(""));
    }

    @Test
    void thereAreNoSpecialAuthorities() throws IOException {
      assertFalse(NativeJNI.doesCurrentUserHaveSpecialAuthority("any"));
    }

    @Test
    void aNullArgumentIsNamed() {
      assertNames("path", () -> NativeJNI.chmod(null, 0));
      assertNames("authority", () -> NativeJNI.doesCurrentUserHaveSpecialAuthority(null));
      assertNames("group", () -> NativeJNI.isCurrentUserMemberOfGroup(null));
      assertNames("path", () -> NativeJNI.mkGroupOmniWrite(null, false));
      assertNames("path", () -> NativeJNI.mkGroupWrite(null, "Users", false));
      assertNames("group", () -> NativeJNI.mkGroupWrite("any", null, false));
      assertNames("path", () -> NativeJNI.mkpriv(null, false, false));
      assertNames("traceSpecification", () -> NativeJNI.rasSetLevel(null));
    }

    @Test
    void aPathThatTheCodePageLacksIsAnErrorThatNamesIt() throws IOException {
      String path = folder.resolve("\u65e5\u672c").toString();
      for (Executable call :
          new Executable[] {
            () -> NativeJNI.mkpriv(path, false, false),
            () -> NativeJNI.mkGroupOmniWrite(path, false),
            () -> NativeJNI.checkFilePermissions(path)
          }) {
        assertEquals(
            "KTBNV0178E: The name '" + path + "' has a character that the code page of this system does not have.",
            assertThrows(IOException.class, call).getMessage());
      }
    }

    private static void assertNames(String argument, Executable call) {
      String message = assertThrows(NullPointerException.class, call).getMessage();
      assertEquals(argument, message);
    }

    private static void assertFails(Class<? extends Exception> type, String message, Executable call) {
      Exception failure = assertThrows(type, call);
      assertEquals(type, failure.getClass());
      assertEquals(message, failure.getMessage());
    }

    private static void assertFailsWith(Class<? extends Exception> type, String beginning, Executable call) {
      Exception failure = assertThrows(type, call);
      assertEquals(type, failure.getClass());
      assertTrue(failure.getMessage().startsWith(beginning), failure::getMessage);
    }
  }
}
