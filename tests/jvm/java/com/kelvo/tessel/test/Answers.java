package com.kelvo.tessel.test;

/** Answers the requests of clients with native code of a test. */
public final class Answers {
    private final long body;

    public Answers(long body) {
        this.body = body;
    }

    public byte[] onMessage(byte[] message) throws Exception {
        return answer(body, message);
    }

    private static native byte[] answer(long body, byte[] message) throws Exception;
}
