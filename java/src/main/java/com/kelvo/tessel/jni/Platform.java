package com.kelvo.tessel.jni;

/** The one platform that there is a library for. */
final class Platform {
  private Platform() {}

  static void require(String system, String processor) {
    boolean wide = "amd64".equals(processor) || "x86_64".equals(processor);
    if (!wide || !system.startsWith("Windows")) {
      throw new UnsatisfiedLinkError(
          "tesselnative.dll needs a Java of 64-bit Windows (x86-64); this is " + system + " " + processor);
    }
  }
}
