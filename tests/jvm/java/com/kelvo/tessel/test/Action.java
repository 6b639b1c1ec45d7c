package com.kelvo.tessel.test;

/** Native code of a test that runs while the library calls Java. */
final class Action implements Runnable {
    private final long body;

    Action(long body) {
        this.body = body;
    }

    @Override
    public void run() {
        run(body);
    }

    private static native void run(long body);
}
