package com.kelvo.tessel.ras;

import com.kelvo.tessel.test.Calls;

public final class Trace extends ExitWithReturn {
    private Trace() {
    }

    public static void nativeMethodEntry(String className, long object, String method, String[] arguments) {
        Calls.add("nativeMethodEntry", className, object, method, arguments);
    }

    public static void nativeMethodData(String className, String level, long object, String method, String[] data) {
        Calls.add("nativeMethodData", className, level, object, method, data);
    }

    public static void nativeMethodThrowing(String className, long object, String method, String text) {
        Calls.add("nativeMethodThrowing", className, object, method, text);
    }
}
