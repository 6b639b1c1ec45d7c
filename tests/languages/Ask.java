import com.kelvo.tessel.ipc.IPCException;
import com.kelvo.tessel.ipc.impl.NativeIPCClient;
import java.io.File;
import java.io.FileOutputStream;
import java.io.OutputStream;
import java.nio.charset.StandardCharsets;

/** Sends a request that fails, and writes the message of the exception in UTF-8 to a file. */
public final class Ask {
  private Ask() {}

  public static void main(String[] arguments) throws Exception {
    File properties = File.createTempFile("ask", ".properties");
    properties.deleteOnExit();
    try (NativeIPCClient client =
        new NativeIPCClient(arguments[0], System.getProperty("java.io.tmpdir"), properties.getPath())) {
      client.sendMessage("request".getBytes(StandardCharsets.UTF_8), -1);
    } catch (IPCException failure) {
      try (OutputStream file = new FileOutputStream(arguments[1])) {
        file.write(failure.getMessage().getBytes(StandardCharsets.UTF_8));
      }
    }
  }
}
