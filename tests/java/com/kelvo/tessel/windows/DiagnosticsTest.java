package com.kelvo.tessel.windows;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.impl.NativeIPCClient;
import com.kelvo.tessel.jni.NativeJNI;
import java.io.IOException;
import java.util.Arrays;
import java.util.Collections;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.atomic.AtomicInteger;
import org.junit.jupiter.api.Test;

/** Native trace and events in the log of this Java process. */
class DiagnosticsTest {
  private static final String CHECK = "isCurrentUserMemberOfGroup(Native Method)";

  @Test
  void aNativeMethodIsSeenWithItsArgumentsAndResult() throws IOException {
    try (JavaLog log = new JavaLog("com.kelvo.tessel.nativ.NYXUtils=FLOW")) {
      NativeJNI.isCurrentUserMemberOfGroup("no such group");
      assertEquals(
          Arrays.asList(
              "FINER com.kelvo.tessel.nativ.NYXUtils." + CHECK + " ENTRY static no such group",
              "FINER com.kelvo.tessel.nativ.NYXUtils." + CHECK + " RETURN static false"),
          log.lines(line -> line.contains(" com.kelvo.tessel.nativ.NYXUtils." + CHECK)));
    }
  }

  @Test
  void withoutASpecificationThereIsNoTrace() throws IOException {
    try (JavaLog log = new JavaLog("")) {
      NativeJNI.isCurrentUserMemberOfGroup("no such group");
      assertEquals(Collections.emptyList(), log.lines(line -> true));
    }
  }

  @Test
  void anExceptionIsSeenAsThrown() throws IOException {
    try (JavaLog log = new JavaLog("com.kelvo.tessel.nativ.NYXUtils=FLOW")) {
      assertThrows(UnsupportedOperationException.class, () -> NativeJNI.chmod("any", 0));
      assertEquals(1, log.lines(line -> line.startsWith("FINER com.kelvo.tessel.nativ.NYXUtils.chmod(Native Method) THROW static ")).size());
    }
  }

  @Test
  void aCaptureIsAnEventInTheLog() throws Exception {
    String name = Folders.uniqueName("crowd");
    try (JavaLog log = new JavaLog("")) {
      assertThrows(IOException.class, () -> NativeJNI.mkGroupWrite(name, "Users", true));
      assertEquals(1, log.lines(line -> line.startsWith("SEVERE FFDC KTBNV0084E: ")).size());
    }
  }

  @Test
  void aLogHandlerThatCallsNativeMethodsIsCalledOnceForEachRecord() throws IOException {
    AtomicInteger depth = new AtomicInteger();
    AtomicInteger deepest = new AtomicInteger();
    try (JavaLog log = new JavaLog("=ALL")) {
      log.reactBy(
          () -> {
            deepest.accumulateAndGet(depth.incrementAndGet(), Math::max);
            callNatively();
            depth.decrementAndGet();
          });
      NativeJNI.isCurrentUserMemberOfGroup("no such group");
      assertFalse(log.lines(line -> line.contains(" com.kelvo.tessel.nativ.NYXUtils." + CHECK + " ENTRY")).isEmpty());
    }
    assertEquals(1, deepest.get());
  }

  @Test
  void aLogHandlerThatSendsARequestToThisProcessEnds() throws Exception {
    AtomicBoolean sending = new AtomicBoolean();
    AtomicInteger sent = new AtomicInteger();
    try (Echo echo = new Echo();
        NativeIPCClient client = echo.connect();
        JavaLog log = new JavaLog("=ALL")) {
      log.reactBy(
          () -> {
            // The server's threads have records, too: one request at a time, and two are enough.
            if (sent.get() < 2 && sending.compareAndSet(false, true)) {
              assertEquals("from the handler", ask(client));
              sent.incrementAndGet();
              sending.set(false);
            }
          });
      Background<Boolean> call = new Background<>(() -> NativeJNI.isCurrentUserMemberOfGroup("no such group"));
      assertFalse(call.result());
      assertEquals(2, sent.get());
    }
  }

  @Test
  void aLogHandlerThatThrowsLeavesNativeCallsAsTheyAre() throws IOException {
    try (JavaLog log = new JavaLog("=ALL")) {
      log.reactBy(
          () -> {
            throw new IllegalStateException("the log handler of this test fails on purpose");
          });
      assertFalse(NativeJNI.isCurrentUserMemberOfGroup("no such group"));
      assertThrows(UnsupportedOperationException.class, () -> NativeJNI.chmod("any", 0));
    }
  }

  @Test
  void traceCanBeSwitchedWhileRequestsRun() throws Exception {
    AtomicBoolean stop = new AtomicBoolean();
    try (Echo echo = new Echo();
        JavaLog log = new JavaLog("")) {
      Background<Integer> requests =
          new Background<>(
              () -> {
                int count = 0;
                try (NativeIPCClient client = echo.connect()) {
                  for (; !stop.get(); count++) {
                    assertEquals("a", Echo.ask(client, "a"));
                  }
                }
                return count;
              });
      for (int i = 0; i < 50; i++) {
        NativeJNI.rasSetLevel(i % 2 == 0 ? "=ALL" : "");
      }
      stop.set(true);
      assertTrue(requests.result() >= 0);
    }
  }

  private static void callNatively() {
    try {
      NativeJNI.doesCurrentUserHaveSpecialAuthority("any");
    } catch (IOException failure) {
      throw new IllegalStateException(failure);
    }
  }

  private static String ask(NativeIPCClient client) {
    try {
      return Echo.ask(client, "from the handler");
    } catch (IPCException failure) {
      throw new IllegalStateException(failure);
    }
  }
}
