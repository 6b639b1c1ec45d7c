import static java.nio.charset.StandardCharsets.UTF_8;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.IPCNotFoundException;
import com.kelvo.tessel.ipc.impl.NativeIPCClient;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;

/** Has each NAME greeted by the server SERVICE and prints the greetings. */
public final class Client {
  private static final int NORMAL_INTERVAL = -1;

  private Client() {}

  public static void main(String[] arguments) throws IOException {
    if (arguments.length < 2) {
      System.err.println("usage: Client SERVICE NAME...");
      System.exit(2);
    }
    List<String> names = Arrays.asList(arguments).subList(1, arguments.length);
    try {
      greetAll(arguments[0], names);
    } catch (IPCNotFoundException nobody) {
      System.err.println("no server of that name is running: " + arguments[0]);
      System.exit(1);
    } catch (IPCException failure) {
      System.err.println(failure.getMessage());
      System.exit(1);
    }
  }

  /** One connection for all names. */
  private static void greetAll(String service, List<String> names) throws IOException, IPCException {
    Path properties = Files.createTempFile("client", ".properties"); // a client needs one, which may be empty
    String directory = System.getProperty("java.io.tmpdir");
    try (NativeIPCClient client = new NativeIPCClient(service, directory, properties.toString())) {
      for (String name : names) {
        System.out.println(new String(client.sendMessage(name.getBytes(UTF_8), NORMAL_INTERVAL), UTF_8));
      }
    } finally {
      Files.delete(properties);
    }
  }
}
