package com.kelvo.tessel.windows;

import static org.junit.jupiter.api.Assertions.assertDoesNotThrow;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.impl.NativeIPCClient;
import com.kelvo.tessel.jni.NativeJNI;
import com.kelvo.tessel.jni.NativeLibrary;
import guide.Secure;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.Collections;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.concurrent.atomic.AtomicReference;
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
  void aSystemPropertySwitchesTraceOnFromTheStart() throws Exception {
    Path configuration = Folders.emptyFile("logging");
    Files.write(
        configuration,
        Arrays.asList(
            "handlers=java.util.logging.ConsoleHandler",
            "java.util.logging.ConsoleHandler.level=ALL",
            "com.kelvo.tessel.nativ.level=ALL"));
    ChildJVM child =
        new ChildJVM(Secure.class, configuration.toString())
            .classPath(Folders.origin(NativeLibrary.class), Folders.origin(Secure.class))
            .property(NativeLibrary.PATH, Folders.library())
            .property(NativeLibrary.TRACE, "com.kelvo.tessel.nativ.NYXUtils=FLOW")
            .property("java.util.logging.config.file", configuration);
    String output = child.start().join().output();
    assertTrue(output.contains("FINER: ENTRY static " + configuration + "\n"), output);
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
    AtomicReference<Thread> sender = new AtomicReference<>();
    AtomicInteger sent = new AtomicInteger();
    try (Echo echo = new Echo();
        NativeIPCClient client = echo.connect();
        JavaLog log = new JavaLog("=ALL")) {
      log.reactBy(
          () -> {
            // Not on the server's threads, which have records, too: one of them would wait for its own answer.
            if (Thread.currentThread() == sender.get()) {
              assertEquals("from the handler", ask(client));
              sent.incrementAndGet();
            }
          });
      Background<Boolean> call =
          new Background<>(
              () -> {
                sender.set(Thread.currentThread());
                return NativeJNI.doesCurrentUserHaveSpecialAuthority("any");
              });
      assertFalse(call.result());
      int records = log.lines(line -> line.contains(".doesCurrentUserHaveSpecialAuthority(Native Method) ")).size();
      assertTrue(records >= 2, "entry and exit at least");
      assertEquals(records, sent.get());
    }
  }

  @Test
  void aLogHandlerThatUsesTheClientOfTheTracedRequestIsRefusedAndDoesNotHang() throws Exception {
    AtomicReference<Thread> sender = new AtomicReference<>();
    AtomicInteger reactions = new AtomicInteger();
    AtomicInteger answered = new AtomicInteger();
    AtomicInteger refused = new AtomicInteger();
    try (Echo echo = new Echo();
        NativeIPCClient client = echo.connect();
        JavaLog log = new JavaLog("=ALL")) {
      log.reactBy(
          () -> {
            if (Thread.currentThread() != sender.get()) {
              return;
            }
            reactions.incrementAndGet();
            try {
              assertEquals("nested", Echo.ask(client, "nested"));
              answered.incrementAndGet();
            } catch (IPCException refusal) {
              assertEquals("the client is busy with a request of this thread", refusal.getMessage());
              refused.incrementAndGet();
            }
          });
      Background<String> call =
          new Background<>(
              () -> {
                sender.set(Thread.currentThread());
                return Echo.ask(client, "outer");
              });
      assertEquals("outer", call.result());
    }
    assertTrue(answered.get() >= 2, "before and after the exchange");
    assertTrue(refused.get() >= 2, "inside the exchange");
    assertEquals(reactions.get(), answered.get() + refused.get());
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
      Background<Void> requests =
          new Background<>(
              () -> {
                try (NativeIPCClient client = echo.connect()) {
                  do {
                    assertEquals("a", Echo.ask(client, "a"));
                  } while (!stop.get());
                }
                return null;
              });
      for (int i = 0; i < 50; i++) {
        NativeJNI.rasSetLevel(i % 2 == 0 ? "=ALL" : "");
      }
      stop.set(true);
      assertDoesNotThrow(requests::result);
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
