package com.kelvo.tessel.ras;

import static org.junit.jupiter.api.Assertions.assertDoesNotThrow;
import static org.junit.jupiter.api.Assertions.assertEquals;

import java.util.Arrays;
import java.util.Collections;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class TraceTest {
  private static final String METHOD = "getBundle(Native Method)";

  private final RecordedLog log = new RecordedLog("NLS");

  @AfterEach
  void close() {
    log.close();
  }

  @Test
  void anEntryHasTheObjectAndTheArguments() {
    Trace.nativeMethodEntry("NLS", 0x4fe6b0, METHOD, new String[] {"name", "en"});
    assertLogged("FINER NLS NLS.getBundle(Native Method) ENTRY {0} {1} {2} [@00000000004fe6b0, name, en]");
  }

  @Test
  void anEntryWithoutArgumentsOrObject() {
    Trace.nativeMethodEntry("NLS", 0, METHOD, new String[0]);
    assertLogged("FINER NLS NLS.getBundle(Native Method) ENTRY {0} [static]");
  }

  @Test
  void anExitWithAndWithoutAResult() {
    Trace.nativeMethodExit("NLS", -1, METHOD, "true");
    Trace.nativeMethodExit("NLS", -1, METHOD);
    assertLogged(
        "FINER NLS NLS.getBundle(Native Method) RETURN {0} {1} [@ffffffffffffffff, true]",
        "FINER NLS NLS.getBundle(Native Method) RETURN {0} [@ffffffffffffffff]");
  }

  @Test
  void anException() {
    Trace.nativeMethodThrowing("NLS", 0, METHOD, "class NYXException: broken");
    assertLogged("FINER NLS NLS.getBundle(Native Method) THROW {0} {1} [static, class NYXException: broken]");
  }

  @ParameterizedTest
  @CsvSource({
    "'FINEST ', FINEST", "'FINER  ', FINER", "'FINE   ', FINE", "'ALL    ', FINEST", "'OFF    ', FINEST", "'', FINEST"
  })
  void dataHasItsOwnLevel(String level, String expected) {
    Trace.nativeMethodData("NLS", level, 0, METHOD, new String[] {"x"});
    assertLogged(expected + " NLS NLS.getBundle(Native Method) DATA {0} {1} [static, x]");
  }

  @Test
  void escapesInArgumentsResultsDataAndExceptionsBecomeCharacters() {
    Trace.nativeMethodEntry("NLS", 0, METHOD, new String[] {"\\u0041"});
    Trace.nativeMethodExit("NLS", 0, METHOD, "\\u0042");
    Trace.nativeMethodData("NLS", "FINE", 0, METHOD, new String[] {"\\u0043"});
    Trace.nativeMethodThrowing("NLS", 0, METHOD, "\\u0044");
    assertLogged(
        "FINER NLS NLS.getBundle(Native Method) ENTRY {0} {1} [static, A]",
        "FINER NLS NLS.getBundle(Native Method) RETURN {0} {1} [static, B]",
        "FINE NLS NLS.getBundle(Native Method) DATA {0} {1} [static, C]",
        "FINER NLS NLS.getBundle(Native Method) THROW {0} {1} [static, D]");
  }

  @Test
  void nullsDoNotThrow() {
    assertDoesNotThrow(() -> Trace.nativeMethodEntry("NLS", 0, METHOD, null));
    assertDoesNotThrow(() -> Trace.nativeMethodExit("NLS", 0, null, null));
    assertDoesNotThrow(() -> Trace.nativeMethodData("NLS", null, 0, METHOD, new String[] {null}));
    assertLogged(
        "FINER NLS NLS.getBundle(Native Method) ENTRY {0} [static]",
        "FINER NLS NLS.null RETURN {0} {1} [static, null]",
        "FINEST NLS NLS.getBundle(Native Method) DATA {0} {1} [static, null]");
  }

  @Test
  void whatTheLoggerDoesNotTakeIsNotHandled() {
    log.setLevel("FINE");
    Trace.nativeMethodEntry("NLS", 0, METHOD, new String[0]);
    Trace.nativeMethodData("NLS", "FINER", 0, METHOD, new String[0]);
    Trace.nativeMethodData("NLS", "FINE", 0, METHOD, new String[0]);
    assertLogged("FINE NLS NLS.getBundle(Native Method) DATA {0} [static]");
  }

  @Test
  void traceThatAHandlerCausesIsDropped() {
    log.reactBy(() -> Trace.nativeMethodExit("NLS", 0, "handler"));
    Trace.nativeMethodExit("NLS", 0, METHOD);
    assertLogged("FINER NLS NLS.getBundle(Native Method) RETURN {0} [static]");
  }

  private void assertLogged(String... lines) {
    assertEquals(lines.length == 1 ? Collections.singletonList(lines[0]) : Arrays.asList(lines), log.lines());
  }
}
