package com.kelvo.tessel.test;

import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;

/** A world of its own for the classes that the library looks up, with one of them, or one method, missing. */
public final class Loader extends ClassLoader {
    private static final String ROOT = "com.kelvo.tessel.";
    private static final String SHARED = "com.kelvo.tessel.jni.NativeJNI";
    private static final String GATE = "com.kelvo.tessel.test.Gate";

    private final String missingClass;
    private final String missingMethod;

    private Loader(String missing) {
        super(Loader.class.getClassLoader());
        int hash = missing.indexOf('#');
        missingClass = hash < 0 ? missing : missing.substring(0, hash);
        missingMethod = hash < 0 ? "" : missing.substring(hash + 1);
    }

    /** The gate into a world where the class, or "class#method", is missing; the empty text for nothing. */
    public static Class<?> gate(String missing) throws ClassNotFoundException {
        return Class.forName(GATE, true, new Loader(missing));
    }

    @Override
    protected Class<?> loadClass(String name, boolean resolve) throws ClassNotFoundException {
        boolean own = name.startsWith(ROOT) && !name.equals(SHARED);
        if (!own || name.startsWith(ROOT + "test.") && !name.equals(GATE)) {
            return super.loadClass(name, resolve);
        }
        Class<?> known = findLoadedClass(name);
        return known != null ? known : define(name);
    }

    private Class<?> define(String name) throws ClassNotFoundException {
        if (name.equals(missingClass) && missingMethod.isEmpty()) {
            throw new ClassNotFoundException(name);
        }
        byte[] bytes = bytesOf(name);
        if (name.equals(missingClass)) {
            bytes = withoutMethod(bytes);
        }
        return defineClass(name, bytes, 0, bytes.length);
    }

    /** The name in the class file gets another first letter. */
    private byte[] withoutMethod(byte[] bytes) {
        String file = new String(bytes, StandardCharsets.ISO_8859_1);
        String length = new String(new char[] {0, (char) missingMethod.length()});
        String renamed = file.replace(length + missingMethod, length + "x" + missingMethod.substring(1));
        return renamed.getBytes(StandardCharsets.ISO_8859_1);
    }

    private byte[] bytesOf(String name) throws ClassNotFoundException {
        String file = name.replace('.', '/') + ".class";
        try (InputStream stream = getParent().getResourceAsStream(file)) {
            if (stream == null) {
                throw new ClassNotFoundException(name);
            }
            ByteArrayOutputStream bytes = new ByteArrayOutputStream();
            byte[] block = new byte[4096];
            for (int length = stream.read(block); length > 0; length = stream.read(block)) {
                bytes.write(block, 0, length);
            }
            return bytes.toByteArray();
        } catch (IOException e) {
            throw new ClassNotFoundException(name, e);
        }
    }
}
