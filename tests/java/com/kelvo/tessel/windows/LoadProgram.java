package com.kelvo.tessel.windows;

import com.kelvo.tessel.ipc.impl.NativeIPCClient;
import java.lang.management.ManagementFactory;
import java.util.ArrayList;
import java.util.List;

/** Prints what each round of many requests by many clients left of this process's memory, in KiB. */
final class LoadProgram {
  private static final int CLIENTS = 64;
  private static final int ROUNDS = 10;
  private static final int REQUESTS = 100_000 / CLIENTS / ROUNDS + 1; // of each client in each round

  private LoadProgram() {}

  public static void main(String[] arguments) throws Exception {
    try (Echo echo = new Echo()) {
      List<NativeIPCClient> clients = new ArrayList<>();
      for (int i = 0; i < CLIENTS; i++) {
        clients.add(echo.connect());
      }
      for (int round = 0; round < ROUNDS; round++) {
        sendByAll(clients);
        System.gc();
        System.out.println(memory() / 1024);
      }
      for (NativeIPCClient client : clients) {
        client.close();
      }
    }
    System.out.println("sent " + CLIENTS * ROUNDS * REQUESTS);
  }

  private static void sendByAll(List<NativeIPCClient> clients) throws Exception {
    List<Background<Void>> threads = new ArrayList<>();
    for (NativeIPCClient client : clients) {
      threads.add(new Background<>(() -> send(client)));
    }
    for (Background<Void> thread : threads) {
      thread.result();
    }
  }

  private static Void send(NativeIPCClient client) throws Exception {
    String text = "request of 64 bytes: 0123456789012345678901234567890123456789abc";
    for (int i = 0; i < REQUESTS; i++) {
      if (!Echo.ask(client, text).equals(text)) {
        throw new IllegalStateException("another reply");
      }
    }
    return null;
  }

  private static long memory() {
    return ((com.sun.management.OperatingSystemMXBean) ManagementFactory.getOperatingSystemMXBean())
        .getCommittedVirtualMemorySize();
  }
}
