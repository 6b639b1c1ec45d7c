package com.kelvo.tessel.ipc;

/**
 * The server is not for the current user. Reserved: a pipe whose access list excludes the user is reported as a plain
 * {@link IPCException} with KTBNV0177.
 */
public class IPCNotAvailableForUserException extends IPCException {
  private static final long serialVersionUID = 1L;

  /**
   * Makes an exception without a cause.
   *
   * @param message what failed, for a person
   */
  public IPCNotAvailableForUserException(String message) {
    super(message);
  }
}
