package com.kelvo.tessel.bench;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.IPCNotFoundException;
import com.kelvo.tessel.ipc.impl.NativeIPCServer;
import java.io.IOException;
import java.lang.management.ManagementFactory;
import java.nio.file.Paths;

/** A server of each kind that sends back what it gets, both in processes of their own. */
final class Servers implements AutoCloseable {
  private static final long WAIT_MILLIS = 50;
  private static final int WARM_UP = 10_000;

  final String nativeService;
  final String javaService;
  private final Process nativeServer;
  private final Process javaServer;

  Servers() throws IOException, IPCException, InterruptedException {
    String name = "tessel-bench-" + ManagementFactory.getRuntimeMXBean().getName().replaceAll("\\W", "-");
    nativeService = name + "-native";
    javaService = name + "-java";
    nativeServer = start(program("bench_ipc.exe"), "serve", "ours", nativeService);
    javaServer =
        start(
            Paths.get(System.getProperty("java.home"), "bin", "java.exe").toString(),
            "-Djava.library.path=" + System.getProperty("java.library.path"),
            "-cp",
            System.getProperty("java.class.path"),
            Servers.class.getName(),
            javaService);
    await(nativeServer, nativeService);
    await(javaServer, javaService);
    warmUp(javaService);
  }

  /** The machines of the clients are warmed up by JMH, the server's is not. */
  private static void warmUp(String service) {
    long client = Natives.connect(service);
    for (int i = 0; i < WARM_UP; i++) {
      Natives.exchange(client);
    }
    Natives.disconnect(client);
  }

  /** A program that lies beside the libraries. */
  static String program(String name) {
    return Paths.get(System.getProperty("java.library.path"), name).toString();
  }

  private static Process start(String... command) throws IOException {
    return new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.INHERIT).start();
  }

  private static void await(Process server, String service) throws IOException, IPCException, InterruptedException {
    while (server.isAlive()) {
      try {
        Exchanges.connect(service).close();
        return;
      } catch (IPCNotFoundException notYet) {
        Thread.sleep(WAIT_MILLIS);
      }
    }
    throw new IllegalStateException(service + " ended with " + server.exitValue());
  }

  @Override
  public void close() {
    nativeServer.destroy();
    javaServer.destroy();
  }

  /** The Java server, until its input ends. */
  public static void main(String[] arguments) throws IOException, IPCException {
    try (NativeIPCServer server = new NativeIPCServer(arguments[0], "", -1, "", message -> message)) {
      while (System.in.read() >= 0) {}
    }
  }
}
