package com.kelvo.tessel.bench;

import java.util.Arrays;
import java.util.function.DoubleSupplier;
import org.openjdk.jmh.results.RunResult;
import org.openjdk.jmh.runner.Runner;
import org.openjdk.jmh.runner.RunnerException;
import org.openjdk.jmh.runner.options.Options;
import org.openjdk.jmh.runner.options.OptionsBuilder;
import org.openjdk.jmh.runner.options.VerboseMode;

/** As in the native benchmarks: what is compared takes turns, and the median of the rounds counts. */
final class Rounds {
  private static final int ROUNDS = 5;

  private Rounds() {}

  /** Nanoseconds of one call of each: every round takes each of them once. */
  static double[] medians(DoubleSupplier... measurements) {
    double[][] times = new double[measurements.length][ROUNDS];
    for (int round = 0; round < ROUNDS; round++) {
      for (int i = 0; i < measurements.length; i++) {
        times[i][round] = measurements[i].getAsDouble();
      }
    }
    return Arrays.stream(times).mapToDouble(Rounds::median).toArray();
  }

  private static double median(double[] values) {
    Arrays.sort(values);
    return values[values.length / 2];
  }

  /** Nanoseconds of one call, in a Java virtual machine of its own, warmed up: the median of iterations or samples. */
  static double time(String benchmark, String service) {
    Options options =
        new OptionsBuilder()
            .include("\\." + benchmark.replace(".", "\\.") + "$")
            .param("service", service)
            .forks(1)
            .shouldFailOnError(true)
            .verbosity(VerboseMode.SILENT)
            .build();
    try {
      RunResult result = new Runner(options).runSingle();
      return result.getPrimaryResult().getStatistics().getPercentile(50);
    } catch (RunnerException failure) {
      throw new IllegalStateException(benchmark, failure);
    }
  }
}
