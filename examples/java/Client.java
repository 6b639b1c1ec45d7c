import static java.nio.charset.StandardCharsets.UTF_8;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.IPCNotFoundException;
import com.kelvo.tessel.ipc.impl.NativeIPCClient;
import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;
import java.nio.file.Files;
import java.nio.file.Path;

/** Has every line of standard input, a name, greeted by the server NAME and prints the greetings. */
public final class Client {
  private static final int NORMAL_INTERVAL = -1;

  private Client() {}

  public static void main(String[] arguments) throws IOException {
    if (arguments.length != 1) {
      System.err.println("usage: Client NAME");
      System.exit(2);
    }
    try {
      greetAll(arguments[0]);
    } catch (IPCNotFoundException nobody) {
      System.err.println("no server of that name is running: " + arguments[0]);
      System.exit(1);
    } catch (IPCException failure) {
      System.err.println(failure.getMessage());
      System.exit(1);
    }
  }

  /** One connection for all names. */
  private static void greetAll(String service) throws IOException, IPCException {
    Path properties = Files.createTempFile("client", ".properties");
    String directory = System.getProperty("java.io.tmpdir");
    try (NativeIPCClient client = new NativeIPCClient(service, directory, properties.toString())) {
      BufferedReader names = new BufferedReader(new InputStreamReader(System.in, UTF_8));
      for (String name = names.readLine(); name != null; name = names.readLine()) {
        System.out.println(new String(client.sendMessage(name.getBytes(UTF_8), NORMAL_INTERVAL), UTF_8));
      }
    } finally {
      Files.delete(properties);
    }
  }
}
