package guide;

import com.kelvo.tessel.jni.NativeJNI;
import java.util.logging.ConsoleHandler;
import java.util.logging.Level;
import java.util.logging.Logger;

public final class TraceToLog {
  // Above all native classes. A logger that nobody holds is forgotten, and its level with it.
  private static final Logger NATIVE = Logger.getLogger("com.kelvo.tessel.nativ");

  public static void main(String[] arguments) throws Exception {
    ConsoleHandler console = new ConsoleHandler();
    console.setLevel(Level.ALL);
    NATIVE.setLevel(Level.ALL);
    NATIVE.setUseParentHandlers(false);
    NATIVE.addHandler(console);
    NativeJNI.rasSetLevel("com.kelvo.tessel.nativ.NYXUtils=FLOW");
    NativeJNI.isCurrentUserMemberOfGroup("Administrators");
  }
}
