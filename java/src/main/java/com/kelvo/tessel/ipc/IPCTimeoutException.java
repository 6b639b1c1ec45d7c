package com.kelvo.tessel.ipc;

/**
 * The reply carries the status "time-out". Reserved for servers that give themselves a limit; those of this library
 * have none, and the time-out given to a request is no limit either.
 */
public class IPCTimeoutException extends IPCException {
  private static final long serialVersionUID = 1L;

  /**
   * Makes an exception without a cause.
   *
   * @param message what failed, for a person
   */
  public IPCTimeoutException(String message) {
    super(message);
  }
}
