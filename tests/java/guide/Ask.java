package guide;

import static java.nio.charset.StandardCharsets.UTF_8;

import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.IPCNotFoundException;
import com.kelvo.tessel.ipc.impl.NativeIPCClient;

public final class Ask {
  public static void main(String[] arguments) {
    // The properties file must exist; it may be empty.
    try (NativeIPCClient client = new NativeIPCClient(arguments[0], "C:/agent", arguments[1])) {
      byte[] reply = client.sendMessage("world".getBytes(UTF_8), -1);
      System.out.println(new String(reply, UTF_8));
    } catch (IPCNotFoundException nobody) {
      System.out.println("nobody serves " + arguments[0]);
    } catch (IPCException failure) {
      System.out.println(failure.getMessage());
    }
  }
}
