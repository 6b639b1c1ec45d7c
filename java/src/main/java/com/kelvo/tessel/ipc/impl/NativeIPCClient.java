package com.kelvo.tessel.ipc.impl;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.jni.NativeLibrary;
import java.util.Objects;

/**
 * A connected client of a local service: one request, one reply.
 *
 * <p>Keep a client for many requests, since connecting costs more than an exchange; the requests of several threads run
 * one after another. Close it in the end, nothing else does. {@link #close()} may be called by any thread, also while a
 * request is running.
 *
 * <p>Requests are cut at 1024 bytes, without an error, and replies at their first zero byte. An empty reply can mean that
 * the server was lost while its reply was awaited.
 *
 * <p>The binding is traced under the whole prefix: a trace specification of the prefix, such as {@code =ALL}, covers it,
 * one that names the Java class does not.
 */
public final class NativeIPCClient implements AutoCloseable {
  static {
    NativeLibrary.load();
  }

  /** Held by the request that runs; never by close, which ends it. */
  private final Object exchange = new Object();

  private final NativeHandle handle;

  /**
   * Connects to a service.
   *
   * @param serviceName the name under which the server serves
   * @param directory the folder whose {@code logs} takes the native failure captures, unless that was decided before, as
   *     it is in a process that loads the library through this jar
   * @param propertiesFile path of a properties file, which must exist and may be empty
   * @throws com.kelvo.tessel.ipc.IPCNotFoundException if nobody serves the name
   * @throws IPCException if the connection fails otherwise, the properties file cannot be read, or a string is null
   */
  public NativeIPCClient(String serviceName, String directory, String propertiesFile) throws IPCException {
    handle = new NativeHandle("the client", initialize(serviceName, directory, propertiesFile));
  }

  /**
   * Sends a request and waits for its reply, without any limit. After a failure close this client and make a new one: what
   * is left in the pipe belongs to the failed exchange.
   *
   * @param request what is sent, at most 1024 bytes
   * @param timeoutMillis the interval, in milliseconds, in which a reply that is not there at once is looked for: it is a
   *     polling interval and no limit, and -1, the shortest, is the normal choice
   * @return the reply
   * @throws IPCException if the exchange fails, the server answers with an exception, or the client is closed meanwhile
   * @throws IllegalStateException if this client is closed
   */
  public byte[] sendMessage(byte[] request, int timeoutMillis) throws IPCException {
    Objects.requireNonNull(request, "request");
    synchronized (exchange) {
      return sendMessage(handle.get(), request, timeoutMillis);
    }
  }

  /**
   * Disconnects; a request that is running ends with an {@link IPCException}. A second call does nothing.
   *
   * @throws IPCException if the native side refuses; the client is then still open
   */
  @Override
  public void close() throws IPCException {
    handle.close(this::shutdown);
  }

  private native long initialize(String serviceName, String directory, String propertiesFile) throws IPCException;

  private native byte[] sendMessage(long handle, byte[] request, int timeoutMillis) throws IPCException;

  private native void shutdown(long handle) throws IPCException;
}
