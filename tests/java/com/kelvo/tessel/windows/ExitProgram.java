package com.kelvo.tessel.windows;

import com.kelvo.tessel.ipc.impl.NativeIPCClient;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/** Ends by leaving main: with idle clients, and with "close" after its server was shut down. */
final class ExitProgram {
  private static final List<NativeIPCClient> IDLE = new ArrayList<>();

  private ExitProgram() {}

  public static void main(String[] arguments) throws Exception {
    Echo echo = new Echo();
    for (int i = 0; i < 3; i++) {
      IDLE.add(echo.connect());
      System.out.println(Echo.ask(IDLE.get(i), "a"));
    }
    if (Arrays.asList(arguments).contains("close")) {
      echo.close();
    }
    System.out.println("end of main");
  }
}
