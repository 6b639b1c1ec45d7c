package com.kelvo.tessel.ipc;

/**
 * Nobody serves the service name. A client that starts together with its server may try again.
 */
public class IPCNotFoundException extends IPCException {
  private static final long serialVersionUID = 1L;

  /**
   * Makes an exception without a cause.
   *
   * @param message what failed, for a person
   */
  public IPCNotFoundException(String message) {
    super(message);
  }
}
