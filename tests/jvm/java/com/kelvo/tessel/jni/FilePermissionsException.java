package com.kelvo.tessel.jni;

import java.io.IOException;

public class FilePermissionsException extends IOException {
    private static final long serialVersionUID = 1L;

    public FilePermissionsException(String message) {
        super(message);
    }
}
