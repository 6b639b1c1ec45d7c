package com.kelvo.tessel.ipc.impl;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.IPCServer;
import com.kelvo.tessel.jni.NativeLibrary;
import java.util.Objects;

/**
 * Serves a name: hands the requests of local clients to a Java object. Each client has a native thread of its own, on which
 * the object is called.
 *
 * <p>Replies are cut at 1024 bytes; a Java client also cuts them at the first zero byte. The binding is traced under the
 * whole prefix: a trace specification of the prefix, such as {@code =ALL}, covers it.
 */
public final class NativeIPCServer implements IPCServer, AutoCloseable {
  static {
    NativeLibrary.load();
  }

  private final IPCServer handler;
  private final NativeHandle handle;

  /**
   * Starts to serve; clients can connect when the constructor returns, and may be answered even before.
   *
   * @param serviceName the name of the service, unique on the machine; case does not count
   * @param directory the folder whose {@code logs} takes the native failure captures, unless that was decided before, as
   *     it is in a process that loads the library through this jar
   * @param maxConnections how many clients are served at once; any number if negative
   * @param adminGroup the name of the administrators' group; reserved, it opens the service to nobody
   * @param handler answers the requests, on many threads at once
   * @throws IPCException if the name is taken or cannot be served, or a string is null
   */
  public NativeIPCServer(
      String serviceName, String directory, int maxConnections, String adminGroup, IPCServer handler)
      throws IPCException {
    this.handler = Objects.requireNonNull(handler, "handler");
    handle = new NativeHandle("the server", initialize(serviceName, directory, maxConnections, adminGroup));
  }

  /** Called by the native side, which looks for this method on the object that it was initialised with. */
  @Override
  public byte[] onMessage(byte[] message) throws Exception {
    return handler.onMessage(message);
  }

  /**
   * Stops serving: waits for the requests in progress, and their replies are still sent. A second call does nothing, and
   * does not wait for the first.
   *
   * @throws IPCException if it is called from inside {@link IPCServer#onMessage}, where it would wait for itself; the
   *     server then goes on serving
   */
  @Override
  public void close() throws IPCException {
    handle.close(this::shutdown);
  }

  private native long initialize(String serviceName, String directory, int maxConnections, String adminGroup)
      throws IPCException;

  private native void shutdown(long handle) throws IPCException;
}
