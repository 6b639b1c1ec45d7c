import static java.nio.charset.StandardCharsets.UTF_8;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.IPCServer;
import com.kelvo.tessel.ipc.impl.NativeIPCServer;
import java.util.concurrent.Semaphore;

/** Serves the name NAME until COUNT requests were answered: each request is a name, each reply a greeting. */
public final class Server {
  private static final int ANY_NUMBER_OF_CLIENTS = -1;

  private Server() {}

  public static void main(String[] arguments) {
    if (arguments.length != 2) {
      System.err.println("usage: Server NAME COUNT");
      System.exit(2);
    }
    Semaphore answered = new Semaphore(0);
    IPCServer greeter = name -> greet(name, answered);
    String directory = System.getProperty("java.io.tmpdir");
    try (NativeIPCServer server =
        new NativeIPCServer(arguments[0], directory, ANY_NUMBER_OF_CLIENTS, "", greeter)) {
      System.out.println("ready");
      answered.acquireUninterruptibly(Integer.parseInt(arguments[1]));
      // Leaving the block closes the server, which waits for the replies that are on their way.
    } catch (IPCException failure) {
      System.err.println(failure.getMessage());
      System.exit(1);
    }
  }

  /** Runs on the native thread of the client, for all clients at once. */
  private static byte[] greet(byte[] name, Semaphore answered) {
    answered.release();
    return ("Hello, " + new String(name, UTF_8) + "!").getBytes(UTF_8);
  }
}
