package com.kelvo.tessel.ipc.impl;

import com.kelvo.tessel.ipc.IPCException;
import java.util.concurrent.atomic.AtomicLong;

/** The native object behind a client or server, until it is closed. Any thread. */
final class NativeHandle {
  /** Deletes the native object. */
  interface Shutdown {
    void shutdown(long handle) throws IPCException;
  }

  private final String owner;
  private final AtomicLong value;

  NativeHandle(String owner, long value) {
    this.owner = owner;
    this.value = new AtomicLong(value);
  }

  /** The handle may be closed before it is used: the native side then answers with an exception. */
  long get() {
    long handle = value.get();
    if (handle == 0) {
      throw new IllegalStateException(owner + " is closed");
    }
    return handle;
  }

  /** Only the first caller reaches the native side. One that is refused there has closed nothing. */
  void close(Shutdown shutdown) throws IPCException {
    long handle = value.getAndSet(0);
    if (handle == 0) {
      return;
    }
    try {
      shutdown.shutdown(handle);
    } catch (IPCException refused) {
      value.set(handle);
      throw refused;
    }
  }
}
