package com.kelvo.tessel.bench;

import com.kelvo.tessel.ras.Trace;
import java.util.concurrent.TimeUnit;
import org.openjdk.jmh.annotations.Benchmark;
import org.openjdk.jmh.annotations.BenchmarkMode;
import org.openjdk.jmh.annotations.Measurement;
import org.openjdk.jmh.annotations.Mode;
import org.openjdk.jmh.annotations.OperationsPerInvocation;
import org.openjdk.jmh.annotations.OutputTimeUnit;
import org.openjdk.jmh.annotations.Scope;
import org.openjdk.jmh.annotations.Setup;
import org.openjdk.jmh.annotations.State;
import org.openjdk.jmh.annotations.Warmup;

/** Calls between Java and native code. What happens on the native side only is repeated there. */
@BenchmarkMode(Mode.AverageTime)
@OutputTimeUnit(TimeUnit.NANOSECONDS)
@Warmup(iterations = 2, time = 500, timeUnit = TimeUnit.MILLISECONDS)
@Measurement(iterations = 1, time = 1)
public class Calls {
  private static final int TIMES = 10_000;

  @State(Scope.Thread)
  public static class Bytes {
    final byte[] bytes = new byte[64];
  }

  @State(Scope.Thread)
  public static class Record {
    @Setup
    public void prepare() {
      Natives.prepareTrace();
      Natives.publish(1);
      Natives.callTrace(1);
      if (Trace.entries != 2) {
        throw new IllegalStateException("Trace was called " + Trace.entries + " times");
      }
    }
  }

  @Benchmark
  public byte[] withArray(Bytes state) {
    return Natives.arrayCall(state.bytes);
  }

  @Benchmark
  @OperationsPerInvocation(TIMES)
  public void disabledTracePoint() {
    TracePoint.pass(TIMES);
  }

  @Benchmark
  @OperationsPerInvocation(TIMES)
  public void publish(Record state) {
    Natives.publish(TIMES);
  }

  @Benchmark
  @OperationsPerInvocation(TIMES)
  public void bareCall(Record state) {
    Natives.callTrace(TIMES);
  }
}
