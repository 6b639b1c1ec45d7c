package guide;

import static java.nio.charset.StandardCharsets.UTF_8;

import com.kelvo.tessel.ipc.IPCServer;
import com.kelvo.tessel.ipc.impl.NativeIPCServer;

public final class Greeter implements IPCServer {
  // Called on the thread of each client, from all of them at once.
  @Override
  public byte[] onMessage(byte[] message) {
    if (message.length == 0) {
      throw new IllegalArgumentException("whom shall I greet?");
    }
    return ("Hello, " + new String(message, UTF_8)).getBytes(UTF_8);
  }

  public static void main(String[] arguments) throws Exception {
    try (NativeIPCServer server = new NativeIPCServer(arguments[0], "C:/agent", 64, "", new Greeter())) {
      System.out.println("serving");
      System.in.read(); // until somebody ends the input
    }
  }
}
