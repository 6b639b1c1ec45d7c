package com.kelvo.tessel.bench;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.impl.NativeIPCClient;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.concurrent.TimeUnit;
import org.openjdk.jmh.annotations.Benchmark;
import org.openjdk.jmh.annotations.BenchmarkMode;
import org.openjdk.jmh.annotations.Measurement;
import org.openjdk.jmh.annotations.Mode;
import org.openjdk.jmh.annotations.OutputTimeUnit;
import org.openjdk.jmh.annotations.Param;
import org.openjdk.jmh.annotations.Scope;
import org.openjdk.jmh.annotations.Setup;
import org.openjdk.jmh.annotations.State;
import org.openjdk.jmh.annotations.TearDown;
import org.openjdk.jmh.annotations.Warmup;

/** Request and reply of 64 bytes; the server is a process of its own. Each exchange is a sample. */
@BenchmarkMode(Mode.SampleTime)
@OutputTimeUnit(TimeUnit.NANOSECONDS)
@Warmup(iterations = 2, time = 500, timeUnit = TimeUnit.MILLISECONDS)
@Measurement(iterations = 1, time = 1)
public class Exchanges {
  static NativeIPCClient connect(String service) throws IOException, IPCException {
    Path properties = Files.createTempFile("bench", ".properties");
    try {
      return new NativeIPCClient(service, properties.getParent().toString(), properties.toString());
    } finally {
      Files.delete(properties);
    }
  }

  @State(Scope.Thread)
  public static class JavaClient {
    @Param("")
    public String service;

    final byte[] request = new byte[64];
    NativeIPCClient client;

    @Setup
    public void open() throws IOException, IPCException {
      Arrays.fill(request, (byte) 'x');
      client = connect(service);
      if (!Arrays.equals(client.sendMessage(request, -1), request)) {
        throw new IllegalStateException("another reply");
      }
    }

    @TearDown
    public void close() throws IPCException {
      client.close();
    }
  }

  @State(Scope.Thread)
  public static class NativeClient {
    @Param("")
    public String service;

    long client;

    @Setup
    public void open() {
      client = Natives.connect(service);
    }

    @TearDown
    public void close() {
      Natives.disconnect(client);
    }
  }

  @Benchmark
  public byte[] byJavaClient(JavaClient state) throws IPCException {
    return state.client.sendMessage(state.request, -1);
  }

  @Benchmark
  public void byNativeClient(NativeClient state) {
    Natives.exchange(state.client);
  }
}
