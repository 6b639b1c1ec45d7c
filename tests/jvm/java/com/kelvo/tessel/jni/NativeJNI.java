package com.kelvo.tessel.jni;

import java.io.IOException;

public final class NativeJNI {
    static {
        System.load(System.getProperty("tessel.test.library"));
    }

    private NativeJNI() {
    }

    public static native void rasInitialize(String logDirectory, String traceSpecNamePrefix) throws IOException;

    public static native void rasSetLevel(String traceSpecification) throws IOException;

    public static native void checkFilePermissions(String path) throws IOException;

    public static native void chmod(String path, int mode) throws IOException;

    public static native boolean doesCurrentUserHaveSpecialAuthority(String authority) throws IOException;

    public static native boolean isCurrentUserMemberOfGroup(String group) throws IOException;

    public static native void mkGroupOmniWrite(String path, boolean everyoneWrite) throws IOException;

    public static native void mkGroupWrite(String path, String group, boolean flag) throws IOException;

    public static native void mkpriv(String path, boolean everyoneRead, boolean everyoneWrite) throws IOException;
}
