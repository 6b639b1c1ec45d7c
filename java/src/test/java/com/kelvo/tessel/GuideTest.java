package com.kelvo.tessel;

import static java.nio.charset.StandardCharsets.UTF_8;
import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.Map;
import java.util.TreeMap;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;

/** The guide shows the programs that the tests on Windows run, byte by byte. */
class GuideTest {
  private static final Pattern BLOCK = Pattern.compile("<!-- guide/(\\w+\\.java) -->\n```java\n(.*?)```\n", Pattern.DOTALL);

  @Test
  void everyProgramStandsInTheGuideAsItIs() throws IOException {
    Map<String, String> programs = new TreeMap<>();
    try (Stream<Path> files = Files.list(Paths.get(System.getProperty("guide.sources")))) {
      for (Path file : files.collect(Collectors.toList())) {
        programs.put(file.getFileName().toString(), text(file));
      }
    }
    Map<String, String> shown = new TreeMap<>();
    for (Matcher block = BLOCK.matcher(guide()); block.find(); ) {
      shown.put(block.group(1), block.group(2));
    }
    assertEquals(programs, shown);
  }

  @Test
  void theGuideHasNoOtherJava() throws IOException {
    Matcher blocks = BLOCK.matcher(guide());
    assertEquals(-1, blocks.replaceAll("").indexOf("```java"));
  }

  private static String guide() throws IOException {
    return text(Paths.get(System.getProperty("guide")));
  }

  private static String text(Path file) throws IOException {
    return new String(Files.readAllBytes(file), UTF_8);
  }
}
