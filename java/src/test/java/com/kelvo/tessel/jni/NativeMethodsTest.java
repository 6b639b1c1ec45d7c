package com.kelvo.tessel.jni;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.Arrays;
import java.util.List;
import java.util.stream.Collectors;
import org.junit.jupiter.api.Test;

/** The library binds by these names and arguments: a change here breaks it. */
class NativeMethodsTest {
  @Test
  void ofDiagnosticsAndFileSecurity() throws Exception {
    assertEquals(
        Arrays.asList(
            "static void checkFilePermissions(String)",
            "static void chmod(String, int)",
            "static boolean doesCurrentUserHaveSpecialAuthority(String)",
            "static boolean isCurrentUserMemberOfGroup(String)",
            "static void mkGroupOmniWrite(String, boolean)",
            "static void mkGroupWrite(String, String, boolean)",
            "static void mkpriv(String, boolean, boolean)",
            "static void rasInitialize(String, String)",
            "static void rasSetLevel(String)"),
        nativeMethods("com.kelvo.tessel.jni.NativeJNI"));
  }

  @Test
  void ofTheClient() throws Exception {
    assertEquals(
        Arrays.asList(
            "long initialize(String, String, String)",
            "byte[] sendMessage(long, byte[], int)",
            "void shutdown(long)"),
        nativeMethods("com.kelvo.tessel.ipc.impl.NativeIPCClient"));
  }

  @Test
  void ofTheServer() throws Exception {
    assertEquals(
        Arrays.asList("long initialize(String, String, int, String)", "void shutdown(long)"),
        nativeMethods("com.kelvo.tessel.ipc.impl.NativeIPCServer"));
  }

  private static List<String> nativeMethods(String className) throws ClassNotFoundException {
    Class<?> type = Class.forName(className, false, NativeMethodsTest.class.getClassLoader());
    return Arrays.stream(type.getDeclaredMethods())
        .filter(method -> Modifier.isNative(method.getModifiers()))
        .sorted((a, b) -> a.getName().compareTo(b.getName()))
        .map(NativeMethodsTest::text)
        .collect(Collectors.toList());
  }

  private static String text(Method method) {
    String parameters =
        Arrays.stream(method.getParameterTypes()).map(Class::getSimpleName).collect(Collectors.joining(", "));
    String kind = Modifier.isStatic(method.getModifiers()) ? "static " : "";
    return kind + method.getReturnType().getSimpleName() + " " + method.getName() + "(" + parameters + ")";
  }
}
