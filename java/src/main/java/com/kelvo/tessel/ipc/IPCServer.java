package com.kelvo.tessel.ipc;

/** Answers the requests that clients send to a service. */
public interface IPCServer {
  /**
   * Answers one request. Called on the thread of each client, from all of them at once.
   *
   * <p>Whatever is thrown ends this request only: the client gets an {@link IPCException} with KTBNV0070, the stack trace
   * goes to standard error, and the server keeps running.
   *
   * @param message the request as it arrived, at most 1024 bytes; the caller does not use the array again
   * @return the reply: of more than 1024 bytes the first 1024 are sent, and a Java client sees what stands before the
   *     first zero byte; {@code null} is an empty reply
   * @throws Exception if the request cannot be answered
   */
  byte[] onMessage(byte[] message) throws Exception;
}
