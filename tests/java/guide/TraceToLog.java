package guide;

import com.kelvo.tessel.jni.NativeJNI;
import java.util.logging.ConsoleHandler;
import java.util.logging.Level;
import java.util.logging.Logger;

public final class TraceToLog {
  // Loggers that nobody holds are forgotten together with their level.
  private static final Logger NATIVE_UTILITIES = Logger.getLogger("NYXUtils");

  public static void main(String[] arguments) throws Exception {
    ConsoleHandler console = new ConsoleHandler();
    console.setLevel(Level.ALL);
    NATIVE_UTILITIES.setLevel(Level.ALL);
    NATIVE_UTILITIES.setUseParentHandlers(false);
    NATIVE_UTILITIES.addHandler(console);
    NativeJNI.rasSetLevel("com.kelvo.tessel.nativ.NYXUtils=FLOW");
    NativeJNI.isCurrentUserMemberOfGroup("Administrators");
  }
}
