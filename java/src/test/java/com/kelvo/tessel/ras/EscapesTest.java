package com.kelvo.tessel.ras;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class EscapesTest {
  @Test
  void fourHexadecimalDigitsOfAnyCaseAreACharacter() {
    assertEquals("\u20ac\u00fcA", NativeRecords.decode("\\u20AC\\u00fc\\u0041"));
  }

  @Test
  void whatStandsAroundThemStays() {
    assertEquals("aAbAcd", NativeRecords.decode("a\\u0041b\\u0041cd"));
  }

  @Test
  void aFifthDigitIsText() {
    assertEquals("A1", NativeRecords.decode("\\u00411"));
  }

  @Test
  void twoHalvesOfACharacterMeet() {
    assertEquals("\ud83d\ude00", NativeRecords.decode("\\ud83d\\ude00"));
  }

  @ParameterizedTest
  @ValueSource(
      strings = {
        "", "\\", "\\u", "\\u004", "\\u004g", "\\U0041", "\\u+041", "\\u 041", "\\n0041", "C:\\users",
        "\\u\uff10\uff10\uff14\uff11"
      })
  void everythingElseStays(String text) {
    assertEquals(text, NativeRecords.decode(text));
  }

  @Test
  void anEscapeBehindABrokenOneIsFound() {
    assertEquals("\\u00A", NativeRecords.decode("\\u00\\u0041"));
    assertEquals("\\uA", NativeRecords.decode("\\u\\u0041"));
  }

  @Test
  void aDecodedBackslashBeginsNoEscape() {
    assertEquals("\\u0041", NativeRecords.decode("\\u005cu0041"));
  }

  @Test
  void nullStaysNull() {
    assertNull(NativeRecords.decode(null));
  }
}
