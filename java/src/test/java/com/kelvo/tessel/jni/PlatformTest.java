package com.kelvo.tessel.jni;

import static org.junit.jupiter.api.Assertions.assertDoesNotThrow;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class PlatformTest {
  @ParameterizedTest
  @CsvSource({"Windows 10, amd64", "Windows 11, x86_64", "Windows Server 2022, amd64"})
  void sixtyFourBitWindowsIsTaken(String system, String processor) {
    assertDoesNotThrow(() -> Platform.require(system, processor));
  }

  @ParameterizedTest
  @CsvSource({"Linux, amd64", "Windows 10, x86", "Windows 11, aarch64", "Mac OS X, x86_64"})
  void anyOtherPlatformIsRefusedByName(String system, String processor) {
    UnsatisfiedLinkError error =
        assertThrows(UnsatisfiedLinkError.class, () -> Platform.require(system, processor));
    assertEquals(
        "tesselnative.dll needs a Java of 64-bit Windows (x86-64); this is " + system + " " + processor,
        error.getMessage());
  }

  @Test
  void loadingOnAnotherPlatformFailsWithThatError() {
    UnsatisfiedLinkError error = assertThrows(UnsatisfiedLinkError.class, NativeLibrary::loadAndInitialise);
    assertEquals(
        "tesselnative.dll needs a Java of 64-bit Windows (x86-64); this is "
            + System.getProperty("os.name") + " " + System.getProperty("os.arch"),
        error.getMessage());
  }
}
