package com.kelvo.tessel.windows;

import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.File;
import java.io.IOException;
import java.nio.charset.Charset;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.TimeUnit;
import java.util.stream.Collectors;

/** Another Windows JVM with checked JNI. Its output goes to a file, so that nobody has to read it meanwhile. */
final class ChildJVM {
  private static final long PATIENCE_SECONDS = 400;

  private final List<String> options = new ArrayList<>(Arrays.asList("-Xcheck:jni", "-Xshare:auto"));
  private final List<Path> classPath = new ArrayList<>();
  private final List<String> program = new ArrayList<>();
  private final Path output;
  private final ProcessBuilder builder = new ProcessBuilder();
  private Process process;

  ChildJVM(Class<?> main, String... arguments) throws IOException {
    program.add(main.getName());
    program.addAll(Arrays.asList(arguments));
    output = Folders.emptyFile("child");
  }

  ChildJVM option(String option) {
    options.add(option);
    return this;
  }

  ChildJVM property(String name, Object value) {
    return option("-D" + name + "=" + value);
  }

  ChildJVM classPath(Path... entries) {
    classPath.addAll(Arrays.asList(entries));
    return this;
  }

  ChildJVM environment(String name, Object value) {
    builder.environment().put(name, value.toString());
    return this;
  }

  ChildJVM start() throws IOException {
    List<String> command = new ArrayList<>();
    command.add(System.getProperty("java.home") + File.separator + "bin" + File.separator + "java.exe");
    command.addAll(options);
    command.add("-cp");
    command.add(classPath.stream().map(Path::toString).collect(Collectors.joining(File.pathSeparator)));
    command.addAll(program);
    process = builder.command(command).redirectErrorStream(true).redirectOutput(output.toFile()).start();
    process.getOutputStream().close();
    return this;
  }

  /** Waits for its end; it must not hang, nor may the JVM have warned of a wrong use of JNI. */
  ChildJVM join() throws IOException, InterruptedException {
    if (!process.waitFor(PATIENCE_SECONDS, TimeUnit.SECONDS)) {
      process.destroyForcibly();
      assertTrue(false, "still running, its output so far: " + output());
    }
    assertFalse(output().contains("WARNING"), output());
    return this;
  }

  int exitCode() {
    return process.exitValue();
  }

  String output() throws IOException {
    return new String(Files.readAllBytes(output), Charset.defaultCharset()).replace("\r\n", "\n");
  }
}
