package com.kelvo.tessel.bench;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.concurrent.TimeUnit;
import java.util.logging.FileHandler;
import java.util.logging.Level;
import java.util.logging.Logger;
import java.util.logging.SimpleFormatter;
import java.util.stream.Stream;
import org.openjdk.jmh.annotations.Benchmark;
import org.openjdk.jmh.annotations.BenchmarkMode;
import org.openjdk.jmh.annotations.Measurement;
import org.openjdk.jmh.annotations.Mode;
import org.openjdk.jmh.annotations.OutputTimeUnit;
import org.openjdk.jmh.annotations.Scope;
import org.openjdk.jmh.annotations.Setup;
import org.openjdk.jmh.annotations.State;
import org.openjdk.jmh.annotations.TearDown;
import org.openjdk.jmh.annotations.Warmup;

/**
 * A record of java.util.logging to rotating files, in one line about as long as one of the native trace. The many methods
 * on its way take long to be compiled on one processor.
 */
@BenchmarkMode(Mode.AverageTime)
@OutputTimeUnit(TimeUnit.NANOSECONDS)
@Warmup(iterations = 20, time = 1)
@Measurement(iterations = 5, time = 1)
@State(Scope.Thread)
public class FileLog {
  private static final String CLASS = "com.kelvo.tessel.bench.FileLog";
  /** Makes the line as long as one of the native trace, which names thread and object. */
  private static final String MESSAGE = "ENTRY in thread 0000000000001a2c of object @00000000004fe6b0 [{0}]";

  private static final int LIMIT = 20 << 20;
  private static final int COUNT = 3;

  private Logger logger;
  private FileHandler handler;
  private Path folder;

  @Setup
  public void open() throws IOException {
    System.setProperty("java.util.logging.SimpleFormatter.format", "%1$tF %1$tT.%1$tL %4$s %2$s %5$s%n");
    folder = Files.createTempDirectory("bench");
    handler = new FileHandler(folder.resolve("java%g.log").toString(), LIMIT, COUNT);
    handler.setFormatter(new SimpleFormatter());
    handler.setLevel(Level.ALL);
    logger = Logger.getLogger(CLASS);
    logger.setUseParentHandlers(false);
    logger.setLevel(Level.ALL);
    logger.addHandler(handler);
  }

  @TearDown
  public void close() throws IOException {
    logger.removeHandler(handler);
    handler.close();
    try (Stream<Path> files = Files.list(folder)) {
      for (Path file : (Iterable<Path>) files::iterator) {
        Files.delete(file);
      }
    }
    Files.delete(folder);
  }

  @Benchmark
  public void record() {
    logger.logp(Level.FINER, CLASS, "method", MESSAGE, "argument");
  }

  /** Writes the nanoseconds of a record. */
  public static void main(String[] arguments) {
    System.out.println(Rounds.time("FileLog.record", ""));
  }
}
