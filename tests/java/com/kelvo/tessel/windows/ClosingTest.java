package com.kelvo.tessel.windows;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.impl.NativeIPCClient;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.CyclicBarrier;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicBoolean;
import org.junit.jupiter.api.Test;

/** Clients and servers that are closed twice, by other threads, and in the middle of a request. */
class ClosingTest {
  @Test
  void aClosedClientIsAnIllegalState() throws Exception {
    try (Echo echo = new Echo()) {
      NativeIPCClient client = echo.connect();
      client.close();
      client.close();
      IllegalStateException closed = assertThrows(IllegalStateException.class, () -> Echo.ask(client, "a"));
      assertEquals("the client is closed", closed.getMessage());
    }
  }

  @Test
  void aServerIsClosedTwice() throws Exception {
    Echo echo = new Echo();
    echo.close();
    echo.close();
  }

  @Test
  void manyThreadsCloseOneClientAndOneServer() throws Exception {
    Echo echo = new Echo();
    NativeIPCClient client = echo.connect();
    CyclicBarrier start = new CyclicBarrier(8);
    List<Background<Void>> threads = new ArrayList<>();
    for (int i = 0; i < 8; i++) {
      threads.add(
          new Background<>(
              () -> {
                start.await();
                client.close();
                echo.close();
                return null;
              }));
    }
    for (Background<Void> thread : threads) {
      thread.result();
    }
  }

  @Test
  void aClientThatIsClosedDuringItsRequestEndsItWithAnException() throws Exception {
    closeDuringARequest(
        (echo, client) -> assertThrows(IllegalStateException.class, () -> Echo.ask(client, "b")));
  }

  @Test
  void theServerGoesOnAfterAClientLeftDuringItsRequest() throws Exception {
    closeDuringARequest((echo, client) -> assertEquals("c", echo.ask("c")));
  }

  private interface Afterwards {
    void check(Echo echo, NativeIPCClient client) throws Exception;
  }

  private static void closeDuringARequest(Afterwards then) throws Exception {
    CountDownLatch entered = new CountDownLatch(1);
    CountDownLatch leave = new CountDownLatch(1);
    try (Echo echo = new Echo(message -> afterwards(entered, leave, message))) {
      NativeIPCClient client = echo.connect();
      Background<String> request = new Background<>(() -> Echo.ask(client, "a"));
      entered.await();
      client.close();
      assertThrows(IPCException.class, request::result);
      leave.countDown();
      then.check(echo, client);
    }
  }

  @Test
  void aServerThatIsClosedDuringARequestOfTenSecondsSendsItsReply() throws Exception {
    CountDownLatch entered = new CountDownLatch(1);
    AtomicBoolean replied = new AtomicBoolean();
    Echo echo =
        new Echo(
            message -> {
              entered.countDown();
              Thread.sleep(TimeUnit.SECONDS.toMillis(10)); // the case itself: longer than any grace of the native side
              replied.set(true);
              return message;
            });
    try (NativeIPCClient client = echo.connect()) {
      Background<String> request = new Background<>(() -> Echo.ask(client, "late"));
      entered.await();
      echo.close();
      assertTrue(replied.get());
      assertEquals("late", request.result());
    }
  }

  @Test
  void aServerIsNotClosedFromInsideAndGoesOn() throws Exception {
    Echo[] self = new Echo[1];
    List<IPCException> refusals = new ArrayList<>();
    try (Echo echo =
        new Echo(
            message -> {
              refusals.add(assertThrows(IPCException.class, self[0]::close));
              return message;
            })) {
      self[0] = echo;
      assertEquals("a", echo.ask("a"));
      assertEquals("b", echo.ask("b"));
      assertEquals(2, refusals.size());
    }
    assertThrows(IPCException.class, self[0]::connect);
  }

  @Test
  void aServerThatIsClosedWhileClientsAreIdleLetsThemGo() throws Exception {
    Echo echo = new Echo();
    NativeIPCClient client = echo.connect();
    assertEquals("a", Echo.ask(client, "a"));
    echo.close();
    assertThrows(IPCException.class, () -> Echo.ask(client, "b"));
    client.close();
  }

  @Test
  void aClientThatIsClosedWhileItIsIdleLeavesItsPlaceToAnother() throws Exception {
    try (Echo echo = new Echo()) {
      for (int i = 0; i < 20; i++) {
        assertEquals("a", echo.ask("a"));
      }
    }
  }

  private static byte[] afterwards(CountDownLatch entered, CountDownLatch leave, byte[] reply)
      throws InterruptedException {
    entered.countDown();
    leave.await();
    return reply;
  }
}
