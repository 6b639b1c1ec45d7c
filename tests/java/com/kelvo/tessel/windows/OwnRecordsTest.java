package com.kelvo.tessel.windows;

import static java.nio.charset.StandardCharsets.ISO_8859_1;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.kelvo.tessel.jni.NativeLibrary;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.regex.Pattern;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

/** A product's own EventLog and Trace in front of the jar's; also crippled ones, and none at all. */
class OwnRecordsTest {
  @TempDir(factory = Folders.Fresh.class)
  Path folder;

  @Test
  void ownClassesGetTheRecords() throws Exception {
    own("EventLog").writeInto(folder);
    own("Trace").writeInto(folder);
    String output = run(folder, jar());
    String method = "isCurrentUserMemberOfGroup(Native Method)";
    assertHasLine(output, "own entry com.kelvo.tessel.nativ.NYXUtils 0 " + method + " [no such group]");
    assertHasLine(output, "own exit com.kelvo.tessel.nativ.NYXUtils 0 " + method + " false");
    assertHasLineBeginning(output, "own throw com.kelvo.tessel.nativ.NYXUtils 0 mkGroupWrite(Native Method) ");
    assertHasLineBeginning(output, "own ERROR FFDC KTBNV0084E: ");
  }

  @ParameterizedTest
  @CsvSource({
    "EventLog, infoNoFormat, com.kelvo.tessel.ras.EventLog.infoNoFormat method not available",
    "EventLog, warningNoFormat, com.kelvo.tessel.ras.EventLog.warningNoFormat method not available",
    "EventLog, errorNoFormat, com.kelvo.tessel.ras.EventLog.errorNoFormat method not available",
    "EventLog, configNoFormat, com.kelvo.tessel.ras.EventLog.configNoFormat method not available",
    "Trace, nativeMethodEntry, com.kelvo.tessel.ras.Trace.entry method not available",
    "Trace, nativeMethodExit, com.kelvo.tessel.ras.Trace.exit method not available",
    "Trace, nativeMethodData, com.kelvo.tessel.ras.Trace.data method not available",
    "Trace, nativeMethodThrowing, com.kelvo.tessel.ras.Trace.throwing method not available"
  })
  void aMissingMethodIsCapturedAndTheOthersAreCalled(String type, String method, String text) throws Exception {
    own("EventLog").writeInto(folder);
    own("Trace").writeInto(folder);
    own(type).replace(method, method.replaceAll(".$", "X")).writeInto(folder);
    String output = run(folder, jar());
    assertTrue(output.contains("\nown "), output);
    assertCaptured(text, output);
  }

  @Test
  void aMissingExitWithoutResultIsCapturedAndTheOthersAreCalled() throws Exception {
    own("EventLog").writeInto(folder);
    own("Trace")
        .replace("(Ljava/lang/String;JLjava/lang/String;)V", "(Ljava/lang/String;JLjava/lang/Object;)V")
        .writeInto(folder);
    String output = run(folder, jar());
    assertTrue(output.contains("\nown exit "), output);
    assertCaptured("com.kelvo.tessel.ras.Trace.exit (with no return) method not available", output);
  }

  @ParameterizedTest
  @ValueSource(strings = {"EventLog", "Trace"})
  void aMissingClassIsCaptured(String type) throws Exception {
    Path jar = folder.resolve("crippled.jar");
    JarCopy.without("com/kelvo/tessel/ras/" + type + ".class", jar);
    own(type.equals("Trace") ? "EventLog" : "Trace").writeInto(folder);
    String output = run(folder, jar);
    assertTrue(output.contains("\nown "), output);
    assertCaptured("com.kelvo.tessel.ras." + type + " class not available", output);
  }

  private static OwnClass own(String simpleName) throws IOException {
    return new OwnClass(simpleName, Folders.origin(OwnClass.class));
  }

  private static Path jar() {
    return Folders.origin(NativeLibrary.class);
  }

  private String run(Path... before) throws IOException, InterruptedException {
    ChildJVM child =
        new ChildJVM(OwnRecordsProgram.class)
            .classPath(before)
            .classPath(Folders.origin(OwnRecordsProgram.class))
            .property(NativeLibrary.PATH, Folders.library())
            .property(NativeLibrary.LOG_DIRECTORY, folder.resolve("logs"));
    String output = child.start().join().output();
    assertEquals(0, child.exitCode(), output);
    assertHasLine(output, "member: false");
    assertHasLine(output, "failed: NYXUtils::mkGroupWrite not implemented");
    assertTrue(output.endsWith("end of main\n"), output);
    return output;
  }

  private static void assertHasLine(String output, String line) {
    assertTrue(("\n" + output).contains("\n" + line + "\n"), output);
  }

  private static void assertHasLineBeginning(String output, String beginning) {
    assertTrue(("\n" + output).contains("\n" + beginning), output);
  }

  /** Once: in a file, or in the output while diagnostics have no log directory yet. */
  private void assertCaptured(String text, String output) throws IOException {
    int found = occurrences(text, output);
    try (Stream<Path> files = Files.list(folder.resolve("logs").resolve("ffdc"))) {
      for (Path capture : files.collect(Collectors.toList())) {
        found += occurrences(text, new String(Files.readAllBytes(capture), ISO_8859_1));
      }
    }
    assertEquals(1, found, output);
  }

  private static int occurrences(String text, String content) {
    return content.split(Pattern.quote(text), -1).length - 1;
  }
}
