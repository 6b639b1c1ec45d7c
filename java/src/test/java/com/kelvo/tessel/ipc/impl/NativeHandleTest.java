package com.kelvo.tessel.ipc.impl;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;

import com.kelvo.tessel.ipc.IPCException;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.concurrent.CyclicBarrier;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import org.junit.jupiter.api.Test;

class NativeHandleTest {
  private final NativeHandle handle = new NativeHandle("the client", 7);
  private final List<Long> shutDown = Collections.synchronizedList(new ArrayList<>());

  @Test
  void anOpenOneGivesItsValue() {
    assertEquals(7, handle.get());
  }

  @Test
  void aClosedOneIsAnIllegalState() throws IPCException {
    handle.close(shutDown::add);
    IllegalStateException closed = assertThrows(IllegalStateException.class, handle::get);
    assertEquals("the client is closed", closed.getMessage());
  }

  @Test
  void theSecondCloseDoesNothing() throws IPCException {
    handle.close(shutDown::add);
    handle.close(shutDown::add);
    assertEquals(Collections.singletonList(7L), shutDown);
  }

  @Test
  void ofManyThreadsThatCloseOneReachesTheNativeSide() throws Exception {
    int count = 16;
    CyclicBarrier start = new CyclicBarrier(count);
    ExecutorService threads = Executors.newFixedThreadPool(count);
    List<Future<Object>> ends = new ArrayList<>();
    for (int i = 0; i < count; i++) {
      ends.add(
          threads.submit(
              () -> {
                start.await();
                handle.close(shutDown::add);
                return null;
              }));
    }
    for (Future<Object> end : ends) {
      end.get();
    }
    threads.shutdown();
    assertEquals(Collections.singletonList(7L), shutDown);
  }

  @Test
  void itIsAlreadyClosedWhileTheNativeSideShutsDown() throws IPCException {
    handle.close(value -> assertThrows(IllegalStateException.class, handle::get));
  }

  @Test
  void aRefusedShutdownLeavesItOpen() throws IPCException {
    IPCException refusal = new IPCException("from inside onMessage");
    IPCException thrown =
        assertThrows(
            IPCException.class,
            () ->
                handle.close(
                    value -> {
                      throw refusal;
                    }));
    assertSame(refusal, thrown);
    assertEquals(7, handle.get());
    handle.close(shutDown::add);
    assertEquals(Collections.singletonList(7L), shutDown);
  }
}
