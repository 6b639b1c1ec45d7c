package com.kelvo.tessel.test;

import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/** What the library called, for the tests to read. */
public final class Calls {
    private static final List<String> calls = new ArrayList<>();
    private static final ByteArrayOutputStream errors = new ByteArrayOutputStream();
    private static volatile String throwing = "";
    private static volatile Runnable during = () -> { };

    static {
        System.setErr(new PrintStream(errors, true));
    }

    private Calls() {
    }

    /** Records a call, runs what a test wants to happen meanwhile, and throws if a test wants that. */
    public static void add(String method, Object... arguments) {
        List<String> texts = new ArrayList<>();
        for (Object argument : arguments) {
            texts.add(argument instanceof String[] ? Arrays.toString((String[]) argument) : String.valueOf(argument));
        }
        synchronized (calls) {
            calls.add(ascii(method + "(" + String.join(", ", texts) + ")"));
        }
        during.run();
        if (method.equals(throwing)) {
            throw new IllegalStateException("thrown by " + method);
        }
    }

    /** All calls since the last time, one a line. */
    public static String take() {
        synchronized (calls) {
            String lines = String.join("\n", calls);
            calls.clear();
            return lines;
        }
    }

    public static void throwIn(String method) {
        throwing = method;
    }

    /** Runs the native body during each call from now on; 0 for nothing. */
    public static void runDuring(long body) {
        during = body == 0 ? () -> { } : new Action(body);
    }

    public static String takeErrors() {
        String text = errors.toString();
        errors.reset();
        return text;
    }

    private static String ascii(String text) {
        StringBuilder result = new StringBuilder();
        for (char c : text.toCharArray()) {
            if (c >= ' ' && c <= '~') {
                result.append(c);
            } else {
                result.append(String.format("<%04x>", (int) c));
            }
        }
        return result.toString();
    }
}
