package com.kelvo.tessel.jni;

import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.InputStream;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;

/** What later versions of Java have in their library. */
final class Bytes {
  private static final int BLOCK = 1 << 16;

  private Bytes() {}

  static byte[] all(InputStream stream) throws IOException {
    ByteArrayOutputStream all = new ByteArrayOutputStream();
    byte[] block = new byte[BLOCK];
    for (int length = stream.read(block); length >= 0; length = stream.read(block)) {
      all.write(block, 0, length);
    }
    return all.toByteArray();
  }

  /** The SHA-256 of the content in lower-case hexadecimal digits. */
  static String sha256(byte[] content) {
    try {
      StringBuilder digits = new StringBuilder();
      for (byte part : MessageDigest.getInstance("SHA-256").digest(content)) {
        digits.append(String.format("%02x", part));
      }
      return digits.toString();
    } catch (NoSuchAlgorithmException impossible) {
      throw new IllegalStateException(impossible); // every Java has it
    }
  }
}
