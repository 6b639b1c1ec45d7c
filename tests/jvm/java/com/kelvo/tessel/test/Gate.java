package com.kelvo.tessel.test;

/** A native method that is called with this class's loader in force. */
final class Gate {
    private Gate() {
    }

    static native void enter(long body);
}
