package com.kelvo.tessel.bench;

import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;
import java.io.UncheckedIOException;
import java.util.Locale;

/** Writes the rows of the Java side to the table of results. */
public final class JavaSide {
  private JavaSide() {}

  private static String number(double value) {
    return String.format(Locale.ROOT, value < 10 ? "%.2f" : "%.1f", value);
  }

  private static String duration(double nanoseconds) {
    return nanoseconds < 1e3 ? number(nanoseconds) + " ns" : number(nanoseconds / 1e3) + " us";
  }

  private static void row(
      String figure, double ours, double peer, String named, String ratio, String mustReach, boolean reached) {
    String[] columns = {
      figure, duration(ours), duration(peer) + ", " + named, ratio, "at most " + mustReach, reached ? "ok" : "MISSED"
    };
    System.out.println("| " + String.join(" | ", columns) + " |");
  }

  private static void times(String figure, double ours, double peer, String named, double limit) {
    double ratio = ours / peer;
    row(figure, ours, peer, named, number(ratio), number(limit), ratio <= limit);
  }

  private static void exchanges() throws Exception {
    try (Servers servers = new Servers()) {
      double[] medians =
          Rounds.medians(
              () -> Rounds.time("Exchanges.byJavaClient", servers.nativeService),
              () -> Rounds.time("Exchanges.byNativeClient", servers.nativeService),
              () -> Rounds.time("Calls.withArray", ""),
              () -> Rounds.time("Exchanges.byNativeClient", servers.javaService));
      times(
          "Java client of a native server, 64 bytes",
          medians[0],
          medians[1] + medians[2],
          "native client (" + duration(medians[1]) + ") and a call with an array (" + duration(medians[2]) + ")",
          1.3);
      times("Java server of a native client, 64 bytes", medians[3], medians[1], "native server", 2);
    }
  }

  /** The same function in a native process. */
  private static double nativeTracePoint() {
    try {
      Process process = new ProcessBuilder(Servers.program("bench_trace.exe"), "time").start();
      try (BufferedReader output = new BufferedReader(new InputStreamReader(process.getInputStream()))) {
        return Double.parseDouble(output.readLine());
      }
    } catch (IOException failure) {
      throw new UncheckedIOException(failure);
    }
  }

  private static void tracePoint() {
    double[] medians = Rounds.medians(() -> Rounds.time("Calls.disabledTracePoint", ""), JavaSide::nativeTracePoint);
    double added = medians[0] - medians[1];
    row(
        "disabled trace point, entry and exit, in a Java virtual machine",
        medians[0],
        medians[1],
        "in a native process",
        String.format(Locale.ROOT, "%+.2f ns", added),
        "+1 ns",
        added <= 1);
  }

  private static void publish() {
    double[] medians =
        Rounds.medians(() -> Rounds.time("Calls.publish", ""), () -> Rounds.time("Calls.bareCall", ""));
    times("trace record to Java: publish", medians[0], medians[1], "the bare static call with the same strings", 3);
  }

  public static void main(String[] arguments) throws Exception {
    exchanges();
    tracePoint();
    publish();
  }
}
