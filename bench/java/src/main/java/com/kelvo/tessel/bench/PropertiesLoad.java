package com.kelvo.tessel.bench;

import java.io.BufferedInputStream;
import java.io.FileInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.util.Arrays;
import java.util.Properties;

/** Writes the nanoseconds that loading a properties file takes once the machine is warm: the median of five rounds. */
public final class PropertiesLoad {
  private static final int WARM_UP = 10;
  private static final int ROUNDS = 5;

  private PropertiesLoad() {}

  private static long load(String path) throws IOException {
    Properties properties = new Properties();
    long start = System.nanoTime();
    try (InputStream file = new BufferedInputStream(new FileInputStream(path), 65536)) {
      properties.load(file);
    }
    long time = System.nanoTime() - start;
    if (properties.isEmpty()) {
      throw new IOException("nothing in " + path);
    }
    return time;
  }

  public static void main(String[] arguments) throws IOException {
    for (String path : arguments) {
      for (int i = 0; i < WARM_UP; i++) {
        load(path);
      }
      long[] times = new long[ROUNDS];
      for (int i = 0; i < ROUNDS; i++) {
        times[i] = load(path);
      }
      Arrays.sort(times);
      System.out.println(times[ROUNDS / 2]);
    }
  }
}
