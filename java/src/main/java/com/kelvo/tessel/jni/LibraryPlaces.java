package com.kelvo.tessel.jni;

import java.io.File;
import java.io.IOException;
import java.io.InputStream;
import java.net.URISyntaxException;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.security.CodeSource;
import java.util.ArrayList;
import java.util.List;

/** The places of the library, in the order in which they count. */
final class LibraryPlaces {
  static final String FILE = "tesselnative.dll";
  static final String RESOURCE = "/com/kelvo/tessel/native/windows-x86_64/" + FILE;

  private LibraryPlaces() {}

  static List<LibraryPlace> inOrder() {
    List<LibraryPlace> places = new ArrayList<>();
    String explicit = System.getProperty(NativeLibrary.PATH);
    places.add(new LibraryPlace("property " + NativeLibrary.PATH, () -> explicitly(explicit)));
    addFolders(places, System.getProperty("java.library.path", ""));
    places.add(new LibraryPlace("beside the jar", () -> besideJar(NativeLibrary.class)));
    places.add(new LibraryPlace("inside the jar", () -> unpacked(RESOURCE)));
    return places;
  }

  static void addFolders(List<LibraryPlace> places, String searchPath) {
    for (String folder : searchPath.split(File.pathSeparator)) {
      if (!folder.isEmpty()) {
        places.add(new LibraryPlace("java.library.path", () -> Paths.get(folder, FILE)));
      }
    }
  }

  private static Path explicitly(String path) throws IOException {
    if (path == null) {
      throw new IOException("not set");
    }
    return Paths.get(path);
  }

  static Path besideJar(Class<?> inside) throws IOException {
    CodeSource source = inside.getProtectionDomain().getCodeSource();
    if (source == null || source.getLocation() == null) {
      throw new IOException("the place of the jar is not known");
    }
    try {
      return Paths.get(source.getLocation().toURI()).resolveSibling(FILE);
    } catch (URISyntaxException | RuntimeException strange) {
      throw new IOException("the jar is no file: " + source.getLocation(), strange);
    }
  }

  static Path unpacked(String resource) throws IOException {
    try (InputStream content = NativeLibrary.class.getResourceAsStream(resource)) {
      if (content == null) {
        throw new IOException("this jar was built without the library");
      }
      PrivateFolder folder = PrivateFolder.ofUser(System.getenv("LOCALAPPDATA"), System.getProperty("java.io.tmpdir"));
      return new UnpackedLibrary(Bytes.all(content), folder).file();
    }
  }
}
