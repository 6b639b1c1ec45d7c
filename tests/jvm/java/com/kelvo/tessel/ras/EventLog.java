package com.kelvo.tessel.ras;

import com.kelvo.tessel.test.Calls;

public final class EventLog {
    private EventLog() {
    }

    public static void infoNoFormat(String className, String text) {
        Calls.add("infoNoFormat", className, text);
    }

    public static void warningNoFormat(String className, String text) {
        Calls.add("warningNoFormat", className, text);
    }

    public static void errorNoFormat(String className, String text) {
        Calls.add("errorNoFormat", className, text);
    }

    public static void configNoFormat(String className, String text) {
        Calls.add("configNoFormat", className, text);
    }
}
