package com.kelvo.tessel.ipc;

/**
 * A request, or the opening or closing of a client or server, failed. The message is translated and names the cause.
 *
 * <p>The subclasses tell apart what a caller may treat differently. {@link IPCNotAvailableForUserException} and
 * {@link IPCTimeoutException} are reserved: the library does not throw the first one at all, and the second one only for a
 * reply with the status "time-out", which no server of this library sends.
 */
public class IPCException extends Exception {
  private static final long serialVersionUID = 1L;

  /**
   * Makes an exception without a cause.
   *
   * @param message what failed, for a person
   */
  public IPCException(String message) {
    super(message);
  }
}
