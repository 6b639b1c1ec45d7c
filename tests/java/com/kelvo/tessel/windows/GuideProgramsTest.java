package com.kelvo.tessel.windows;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.kelvo.tessel.jni.NativeLibrary;
import guide.Ask;
import guide.Greeter;
import guide.Secure;
import guide.TraceToLog;
import java.io.ByteArrayOutputStream;
import java.io.InputStream;
import java.io.PrintStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.concurrent.Callable;
import java.util.concurrent.CountDownLatch;
import java.util.stream.Collectors;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The programs of the guide do what the guide says. */
class GuideProgramsTest {
  @TempDir(factory = Folders.Fresh.class)
  Path folder;

  @Test
  void theGreeterGreetsWhoAsksAndThenIsGone() throws Exception {
    String name = Folders.uniqueName("greeter");
    String properties = Files.createFile(folder.resolve("agent.properties")).toString();
    UntilReleased input = new UntilReleased();
    InputStream before = System.in;
    System.setIn(input);
    try {
      Background<Void> greeter =
          new Background<>(
              () -> {
                Greeter.main(new String[] {name});
                return null;
              });
      input.reached.await();
      assertEquals("Hello, world\n", output(() -> ask(name, properties)));
      input.released.countDown();
      greeter.result();
      assertEquals("nobody serves " + name + "\n", output(() -> ask(name, properties)));
    } finally {
      System.setIn(before);
    }
  }

  @Test
  void anOpenFileIsSecuredOnce() throws Exception {
    String file = Files.createFile(folder.resolve("file")).toString();
    Callable<Void> secure =
        () -> {
          Secure.main(new String[] {file, file});
          return null;
        };
    assertEquals("secured\nclosed to others\n", output(secure));
  }

  @Test
  void traceReachesTheConsole() throws Exception {
    ChildJVM child =
        new ChildJVM(TraceToLog.class)
            .classPath(Folders.origin(NativeLibrary.class), Folders.origin(TraceToLog.class))
            .property(NativeLibrary.PATH, Folders.library());
    String output = child.start().join().output();
    assertEquals(
        Arrays.asList("FINER: ENTRY static Administrators", "FINER: RETURN static true"),
        Arrays.stream(output.split("\n")).filter(line -> line.startsWith("FINER")).collect(Collectors.toList()),
        output);
  }

  private static Void ask(String name, String properties) {
    Ask.main(new String[] {name, properties});
    return null;
  }

  private static String output(Callable<Void> program) throws Exception {
    ByteArrayOutputStream taken = new ByteArrayOutputStream();
    PrintStream before = System.out;
    System.setOut(new PrintStream(taken));
    try {
      program.call();
    } finally {
      System.out.flush();
      System.setOut(before);
    }
    return taken.toString().replace("\r\n", "\n");
  }

  /** An input that ends when it is released. */
  private static final class UntilReleased extends InputStream {
    final CountDownLatch reached = new CountDownLatch(1);
    final CountDownLatch released = new CountDownLatch(1);

    @Override
    public int read() {
      reached.countDown();
      try {
        released.await();
      } catch (InterruptedException ended) {
        Thread.currentThread().interrupt();
      }
      return -1;
    }
  }
}
