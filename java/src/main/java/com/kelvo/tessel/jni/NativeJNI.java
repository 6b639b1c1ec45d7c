package com.kelvo.tessel.jni;

import java.io.IOException;

/**
 * Diagnostics, file security and group checks of the native library. Any thread.
 *
 * <p>Paths and names of groups reach the system in its ANSI code page: a character that it lacks is an error, never another
 * file. A null argument is a {@link NullPointerException} that names it, except for {@link #checkFilePermissions}.
 */
public final class NativeJNI {
  static {
    NativeLibrary.loadAndInitialise();
  }

  private NativeJNI() {}

  /** Has the class initialised, and so the library loaded. */
  static void touch() {}

  /**
   * Connects native diagnostics with {@link com.kelvo.tessel.ras.EventLog} and {@link com.kelvo.tessel.ras.Trace}. This jar
   * calls it right after loading; later calls have no effect.
   *
   * @param logDirectory where native failure captures are written, in its folder {@code ffdc}
   * @param traceSpecNamePrefix the prefix under which the names of a trace specification are read
   * @throws IOException if diagnostics cannot be set up
   */
  public static native void rasInitialize(String logDirectory, String traceSpecNamePrefix) throws IOException;

  /**
   * Switches native trace. The names are native classes behind the prefix, {@code NativeJNI} for this one; the bindings of
   * messaging are reached by the whole prefix only, as with {@code =ALL}.
   *
   * @param traceSpecification entries {@code name,name=LEVEL} separated by colons; empty switches trace off, and a leading
   *     plus adds to what is on
   * @throws IOException if the text of the entries cannot be read
   */
  public static native void rasSetLevel(String traceSpecification) throws IOException;

  /**
   * Tests that Guests, Users and Everyone have no access to a file or directory.
   *
   * @param path of the file
   * @throws FilePermissionsException if one of them has, the access list cannot be judged, or the path is null
   * @throws IOException if the check fails otherwise
   */
  public static native void checkFilePermissions(String path) throws IOException;

  /**
   * Not supported: there are no mode bits on this platform.
   *
   * @param path of the file
   * @param mode bits
   * @throws UnsupportedOperationException always
   * @throws IOException if the path has characters that the system's code page lacks
   */
  public static native void chmod(String path, int mode) throws IOException;

  /**
   * Tells whether the current user has a special authority; there are none on this platform.
   *
   * @param authority its name
   * @return false
   * @throws IOException if the name cannot be handed over
   */
  public static native boolean doesCurrentUserHaveSpecialAuthority(String authority) throws IOException;

  /**
   * Tells whether the current user's token has a group.
   *
   * @param group its name without domain, compared exactly and with case
   * @return whether it is there; deny-only groups count, too
   * @throws IOException if the token cannot be read
   */
  public static native boolean isCurrentUserMemberOfGroup(String group) throws IOException;

  /**
   * Leaves a file or directory to the current user, the Administrators and the group {@code omni}, if there is one.
   * Everyone may always read.
   *
   * @param path of the file or directory
   * @param everyoneWrite everyone may do everything
   * @throws IOException if the access list cannot be set
   */
  public static native void mkGroupOmniWrite(String path, boolean everyoneWrite) throws IOException;

  /**
   * Not supported.
   *
   * @param path of the file or directory
   * @param group a group
   * @param flag any value
   * @throws IOException always
   */
  public static native void mkGroupWrite(String path, String group, boolean flag) throws IOException;

  /**
   * Leaves a file or directory to the current user and the Administrators.
   *
   * @param path of the file or directory
   * @param everyoneRead everyone may read as well
   * @param everyoneWrite everyone may write as well, delete it, and change its access list
   * @throws IOException if the access list cannot be set
   */
  public static native void mkpriv(String path, boolean everyoneRead, boolean everyoneWrite) throws IOException;
}
