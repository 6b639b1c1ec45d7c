package com.kelvo.tessel.ras;

import static org.junit.jupiter.api.Assertions.assertDoesNotThrow;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import java.util.Arrays;
import java.util.Collections;
import java.util.logging.Level;
import java.util.logging.LogRecord;
import java.util.logging.SimpleFormatter;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;

class EventLogTest {
  private final RecordedLog log = new RecordedLog("IPCServerImpl");

  @AfterEach
  void close() {
    log.close();
  }

  @Test
  void eachKindOfEventHasItsLevel() {
    EventLog.configNoFormat("IPCServerImpl", "a");
    EventLog.infoNoFormat("IPCServerImpl", "b");
    EventLog.warningNoFormat("IPCServerImpl", "c");
    EventLog.errorNoFormat("IPCServerImpl", "d");
    assertEquals(
        Arrays.asList(
            "CONFIG IPCServerImpl IPCServerImpl.null a",
            "INFO IPCServerImpl IPCServerImpl.null b",
            "WARNING IPCServerImpl IPCServerImpl.null c",
            "SEVERE IPCServerImpl IPCServerImpl.null d"),
        log.lines());
  }

  @Test
  void escapesBecomeCharacters() {
    EventLog.infoNoFormat("IPCServerImpl", "Gr\\u00fc\\u00dfe");
    assertEquals(Collections.singletonList("INFO IPCServerImpl IPCServerImpl.null Gr\u00fc\u00dfe"), log.lines());
  }

  @Test
  void bracesAreNoPlaceholders() {
    EventLog.infoNoFormat("IPCServerImpl", "it's {0} and {1}");
    LogRecord record = new LogRecord(Level.INFO, "it's {0} and {1}");
    assertEquals("it's {0} and {1}", new SimpleFormatter().formatMessage(record));
    assertEquals(
        Collections.singletonList("INFO IPCServerImpl IPCServerImpl.null it's {0} and {1}"), log.lines());
  }

  @Test
  void whatTheLoggerDoesNotTakeIsNotHandled() {
    log.setLevel("WARNING");
    EventLog.infoNoFormat("IPCServerImpl", "a");
    EventLog.warningNoFormat("IPCServerImpl", "b");
    assertEquals(Collections.singletonList("WARNING IPCServerImpl IPCServerImpl.null b"), log.lines());
  }

  @Test
  void nullTextAndNullClassDoNotThrow() {
    assertDoesNotThrow(() -> EventLog.infoNoFormat("IPCServerImpl", null));
    assertEquals(Collections.singletonList("INFO IPCServerImpl IPCServerImpl.null null"), log.lines());
    assertDoesNotThrow(() -> EventLog.infoNoFormat(null, "text"));
  }

  @Test
  void aHandlerThatThrowsOrFailsDoesNotReachTheCaller() {
    PrintStream standardError = System.err;
    System.setErr(new PrintStream(new ByteArrayOutputStream()));
    try {
      log.reactBy(
          () -> {
            throw new IllegalStateException("handler");
          });
      assertDoesNotThrow(() -> EventLog.infoNoFormat("IPCServerImpl", "a"));
      log.reactBy(
          () -> {
            throw new StackOverflowError("handler");
          });
      assertDoesNotThrow(() -> EventLog.infoNoFormat("IPCServerImpl", "b"));
    } finally {
      System.setErr(standardError);
    }
    assertEquals(2, log.lines().size());
  }

  @Test
  void afterAHandlerThatThrewEventsGoOn() {
    aHandlerThatThrowsOrFailsDoesNotReachTheCaller();
    log.reactBy(() -> {});
    EventLog.infoNoFormat("IPCServerImpl", "c");
    assertTrue(log.lines().contains("INFO IPCServerImpl IPCServerImpl.null c"));
  }

  @Test
  void anEventThatAHandlerCausesIsDropped() {
    log.reactBy(() -> EventLog.infoNoFormat("IPCServerImpl", "of the handler"));
    EventLog.infoNoFormat("IPCServerImpl", "a");
    EventLog.infoNoFormat("IPCServerImpl", "b");
    assertEquals(
        Arrays.asList("INFO IPCServerImpl IPCServerImpl.null a", "INFO IPCServerImpl IPCServerImpl.null b"),
        log.lines());
  }

  @Test
  void anEventInsideATraceRecordIsTaken() {
    Runnable once =
        () -> {
          log.reactBy(() -> {});
          EventLog.infoNoFormat("IPCServerImpl", "inside");
        };
    log.reactBy(once);
    Trace.nativeMethodExit("IPCServerImpl", 0, "connect(Native Method)");
    assertEquals(
        Arrays.asList(
            "FINER IPCServerImpl IPCServerImpl.connect(Native Method) RETURN {0} [static]",
            "INFO IPCServerImpl IPCServerImpl.null inside"),
        log.lines());
  }
}
