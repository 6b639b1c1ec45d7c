package com.kelvo.tessel.ras;

import com.kelvo.tessel.test.Calls;

/** In a class of its own, so that one of the two forms can be missing. */
public class ExitWithoutReturn {
    public static void nativeMethodExit(String className, long object, String method) {
        Calls.add("nativeMethodExit", className, object, method);
    }
}
