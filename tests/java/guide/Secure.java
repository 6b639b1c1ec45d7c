package guide;

import com.kelvo.tessel.jni.FilePermissionsException;
import com.kelvo.tessel.jni.NativeJNI;
import java.io.IOException;

public final class Secure {
  public static void main(String[] paths) throws IOException {
    for (String path : paths) {
      try {
        NativeJNI.checkFilePermissions(path);
        System.out.println("closed to others");
      } catch (FilePermissionsException open) {
        NativeJNI.mkpriv(path, false, false); // the current user and the Administrators
        System.out.println("secured");
      }
    }
  }
}
