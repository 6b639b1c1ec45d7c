package com.kelvo.tessel.windows;

import com.kelvo.tessel.jni.NativeJNI;
import java.io.IOException;

/** Causes each kind of native record once or more, whatever becomes of them. */
final class OwnRecordsProgram {
  private OwnRecordsProgram() {}

  public static void main(String[] arguments) throws Exception {
    NativeJNI.rasSetLevel("=ALL");
    System.out.println("member: " + NativeJNI.isCurrentUserMemberOfGroup("no such group"));
    try {
      NativeJNI.mkGroupWrite("any", "Users", true);
    } catch (IOException failure) {
      System.out.println("failed: " + failure.getMessage());
    }
    System.out.println("end of main");
  }
}
