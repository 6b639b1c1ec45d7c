package com.kelvo.tessel.windows;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.IPCNotFoundException;
import com.kelvo.tessel.ipc.IPCServer;
import com.kelvo.tessel.ipc.impl.NativeIPCClient;
import com.kelvo.tessel.ipc.impl.NativeIPCServer;
import java.io.IOException;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Nested;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;

/** Client and server in one process, without trace and with everything traced. */
class MessagingTest {
  private static final String THROWN = "KTBNV0070E: The Java method that processes messages threw an exception.";

  @Nested
  class WithoutTrace extends Exchanges {
    WithoutTrace() {
      super("");
    }
  }

  @Nested
  class WithEverythingTraced extends Exchanges {
    WithEverythingTraced() {
      super("=ALL");
    }
  }

  abstract static class Exchanges {
    private final String traceSpecification;
    private JavaLog log;

    Exchanges(String traceSpecification) {
      this.traceSpecification = traceSpecification;
    }

    @BeforeEach
    void begin() throws IOException {
      log = new JavaLog(traceSpecification);
    }

    @AfterEach
    void end() {
      log.close();
    }

    @Test
    void aReplyIsWhatTheObjectReturned() throws Exception {
      try (Echo echo = new Echo(message -> reversed(message));
          NativeIPCClient client = echo.connect()) {
        assertEquals("cba", Echo.ask(client, "abc"));
        assertEquals("", Echo.ask(client, ""));
        assertEquals("\u00ff\u0080", Echo.ask(client, "\u0080\u00ff"));
      }
    }

    @Test
    void threadsThatShareAClientEachGetTheirOwnReplies() throws Exception {
      try (Echo echo = new Echo();
          NativeIPCClient client = echo.connect()) {
        List<Background<Void>> threads = new ArrayList<>();
        for (int i = 0; i < 4; i++) {
          String text = "thread " + i;
          threads.add(new Background<>(() -> assertEchoed(client, text)));
        }
        for (Background<Void> thread : threads) {
          thread.result();
        }
      }
    }

    @Test
    void aRequestIsCutAt1024Bytes() throws Exception {
      try (Echo echo = new Echo(message -> Integer.toString(message.length).getBytes("US-ASCII"))) {
        assertEquals("1024", echo.ask(letters(1024)));
        assertEquals("1024", echo.ask(letters(1025)));
        assertEquals("1024", echo.ask(letters(100_000)));
      }
    }

    @Test
    void aReplyIsCutAt1024Bytes() throws Exception {
      try (Echo echo = new Echo(message -> letters(5000).getBytes("US-ASCII"))) {
        assertEquals(letters(1024), echo.ask("any"));
      }
    }

    @Test
    void aReplyIsCutAtItsFirstZeroByteAndARequestIsNot() throws Exception {
      try (Echo echo = new Echo(message -> (message.length + "\0x").getBytes("US-ASCII"))) {
        assertEquals("3", echo.ask("a\0b"));
      }
    }

    @Test
    void anObjectThatReturnsNullGivesAnEmptyReply() throws Exception {
      try (Echo echo = new Echo(message -> null)) {
        assertEquals("", echo.ask("any"));
      }
    }

    @Test
    void anObjectThatThrowsGivesAnExceptionAndTheServerGoesOn() throws Exception {
      assertSurvives(
          message -> {
            throw new IOException("checked");
          });
    }

    @Test
    void anErrorOfTheObjectGivesAnExceptionAndTheServerGoesOn() throws Exception {
      assertSurvives(
          message -> {
            throw new AssertionError("error");
          });
    }

    @Test
    void anObjectCanAskAnotherServiceFromInside() throws Exception {
      try (Echo inner = new Echo();
          Echo outer = new Echo(message -> ("<" + inner.ask("inner") + ">").getBytes("US-ASCII"))) {
        assertEquals("<inner>", outer.ask("outer"));
      }
    }

    @Test
    void anObjectCanAskItsOwnServiceFromInside() throws Exception {
      Echo[] self = new Echo[1];
      IPCServer handler = message -> message.length == 0 ? new byte[] {'!'} : self[0].ask("").getBytes("US-ASCII");
      try (Echo echo = new Echo(handler)) {
        self[0] = echo;
        assertEquals("!", echo.ask("any"));
      }
    }

    @Test
    void aServiceThatNobodyServesIsNotFound() {
      IPCException failure =
          assertFails(IPCNotFoundException.class, () -> new NativeIPCClient("nobody", "", anyProperties()));
      String beginning = "KTBNV0066E: Unable to connect to the service 'nobody'. System text: ";
      assertTrue(failure.getMessage().startsWith(beginning), failure::getMessage);
    }

    @Test
    void aMissingPropertiesFileIsAnExceptionAlsoWhereTheServiceIsServed() throws Exception {
      try (Echo echo = new Echo()) {
        assertFails(IPCException.class, () -> new NativeIPCClient(echo.name(), "", "Z:\\no such folder\\file"));
      }
    }

    @Test
    void aNullStringIsAnException() throws Exception {
      String file = anyProperties();
      IPCServer handler = message -> message;
      assertFails(IPCException.class, () -> new NativeIPCClient(null, "", file));
      assertFails(IPCException.class, () -> new NativeIPCClient("any", null, file));
      assertFails(IPCException.class, () -> new NativeIPCClient("any", "", null));
      assertFails(IPCException.class, () -> new NativeIPCServer(null, "", 1, "", handler));
      assertFails(IPCException.class, () -> new NativeIPCServer(Folders.uniqueName("null"), null, 1, "", handler));
      assertFails(IPCException.class, () -> new NativeIPCServer(Folders.uniqueName("null"), "", 1, null, handler));
    }

    @Test
    void aNullRequestAndANullHandlerAreNamed() throws Exception {
      try (Echo echo = new Echo();
          NativeIPCClient client = echo.connect()) {
        Executable ask = () -> client.sendMessage(null, -1);
        assertEquals("request", assertThrows(NullPointerException.class, ask).getMessage());
        assertEquals("a", Echo.ask(client, "a"));
      }
      Executable serve = () -> new NativeIPCServer("any", "", 1, "", null);
      assertEquals("handler", assertThrows(NullPointerException.class, serve).getMessage());
    }

    @Test
    void aNameThatCannotBeServedIsAnException() {
      assertFails(IPCException.class, () -> Echo.serve(letters(300), message -> message));
    }

    @Test
    void aServiceCanBeServedAgain() throws Exception {
      Echo echo = new Echo();
      assertEquals("a", echo.ask("a"));
      echo.close();
      assertFails(IPCNotFoundException.class, echo::connect);
      try (NativeIPCServer again = Echo.serve(echo.name(), message -> new byte[] {'2'})) {
        assertEquals("2", echo.ask("a"));
      }
    }

    private static void assertSurvives(IPCServer failing) throws Exception {
      IPCServer handler = message -> message.length == 0 ? failing.onMessage(message) : message;
      try (Echo echo = new Echo(handler);
          NativeIPCClient client = echo.connect()) {
        assertEquals("before", Echo.ask(client, "before"));
        for (int i = 0; i < 3; i++) {
          assertEquals(THROWN, assertFails(IPCException.class, () -> Echo.ask(client, "")).getMessage());
        }
        assertEquals("after", Echo.ask(client, "after"));
      }
    }

    private static Void assertEchoed(NativeIPCClient client, String text) throws IPCException {
      for (int i = 0; i < 20; i++) {
        assertEquals(text, Echo.ask(client, text));
      }
      return null;
    }

    private static IPCException assertFails(Class<? extends IPCException> type, Executable call) {
      IPCException failure = assertThrows(type, call);
      assertEquals(type, failure.getClass());
      return failure;
    }

    private static String anyProperties() throws IOException {
      return Folders.emptyFile("properties").toString();
    }

    private static byte[] reversed(byte[] text) {
      byte[] result = new byte[text.length];
      for (int i = 0; i < text.length; i++) {
        result[i] = text[text.length - 1 - i];
      }
      return result;
    }

    private static String letters(int count) {
      char[] text = new char[count];
      Arrays.fill(text, 'x');
      return new String(text);
    }
  }
}
