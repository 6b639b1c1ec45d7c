package com.kelvo.tessel.jni;

import java.io.IOException;

/** A file is open to more users than it should be, or its access list cannot be judged. */
public class FilePermissionsException extends IOException {
  private static final long serialVersionUID = 1L;

  /**
   * Makes an exception without a cause.
   *
   * @param message what is wrong with the file, for a person
   */
  public FilePermissionsException(String message) {
    super(message);
  }
}
