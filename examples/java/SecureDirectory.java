import com.kelvo.tessel.jni.FilePermissionsException;
import com.kelvo.tessel.jni.NativeJNI;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Paths;

/** Makes the directory DIRECTORY if it is missing, leaves it to the current user and the Administrators, and checks it. */
public final class SecureDirectory {
  private SecureDirectory() {}

  public static void main(String[] arguments) {
    if (arguments.length != 1) {
      System.err.println("usage: SecureDirectory DIRECTORY");
      System.exit(2);
    }
    try {
      Files.createDirectories(Paths.get(arguments[0]));
      NativeJNI.mkpriv(arguments[0], false, false);
      NativeJNI.checkFilePermissions(arguments[0]);
      System.out.println("secured: " + arguments[0]);
    } catch (FilePermissionsException open) {
      System.err.println("still open: " + open.getMessage());
      System.exit(1);
    } catch (IOException failure) {
      System.err.println(failure.getMessage());
      System.exit(1);
    }
  }
}
