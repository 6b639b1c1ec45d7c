package com.kelvo.tessel.windows;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.IPCServer;
import com.kelvo.tessel.ipc.impl.NativeIPCClient;
import com.kelvo.tessel.ipc.impl.NativeIPCServer;
import java.io.IOException;
import java.nio.charset.StandardCharsets;

/** A service of this process under a name of its own, and clients for it. */
final class Echo implements AutoCloseable {
  private static final int NO_LIMIT = -1;
  private static final int NORMAL_INTERVAL = -1;

  private final String name = Folders.uniqueName("echo");
  private final String properties = Folders.emptyFile("properties").toString();
  private final NativeIPCServer server;

  Echo() throws IPCException, IOException {
    this(message -> message);
  }

  Echo(IPCServer handler) throws IPCException, IOException {
    server = serve(name, handler);
  }

  static NativeIPCServer serve(String name, IPCServer handler) throws IPCException {
    return new NativeIPCServer(name, directory(), NO_LIMIT, "", handler);
  }

  static String directory() {
    return System.getProperty("java.io.tmpdir");
  }

  String name() {
    return name;
  }

  NativeIPCServer server() {
    return server;
  }

  NativeIPCClient connect() throws IPCException {
    return new NativeIPCClient(name, directory(), properties);
  }

  static String ask(NativeIPCClient client, String request) throws IPCException {
    byte[] reply = client.sendMessage(request.getBytes(StandardCharsets.ISO_8859_1), NORMAL_INTERVAL);
    return new String(reply, StandardCharsets.ISO_8859_1);
  }

  /** One request of a client of its own. */
  String ask(String request) throws IPCException {
    try (NativeIPCClient client = connect()) {
      return ask(client, request);
    }
  }

  @Override
  public void close() throws IPCException {
    server.close();
  }
}
