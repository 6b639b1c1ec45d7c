package com.kelvo.tessel.jni;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import java.io.File;
import java.io.IOException;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;

class LibraryPlacesTest {
  private String searchPath;

  @BeforeEach
  void setSearchPath() {
    searchPath = System.getProperty("java.library.path");
    System.setProperty("java.library.path", "/one" + File.pathSeparator + File.pathSeparator + "/two");
  }

  @AfterEach
  void restoreProperties() {
    System.setProperty("java.library.path", searchPath);
    System.clearProperty(NativeLibrary.PATH);
  }

  @Test
  void thePlacesComeInTheirOrder() {
    List<String> names = new ArrayList<>();
    LibraryPlaces.inOrder().forEach(place -> names.add(place.name()));
    assertEquals(
        Arrays.asList(
            "property com.kelvo.tessel.native.path",
            "java.library.path",
            "java.library.path",
            "beside the jar",
            "inside the jar"),
        names);
  }

  @Test
  void theExplicitPathIsTheFileItself() throws IOException {
    System.setProperty(NativeLibrary.PATH, "/here/mine.dll");
    assertEquals(Paths.get("/here/mine.dll"), LibraryPlaces.inOrder().get(0).file());
  }

  @Test
  void withoutAnExplicitPathThePlaceSaysSo() {
    LibraryPlace explicit = LibraryPlaces.inOrder().get(0);
    assertEquals("not set", assertThrows(IOException.class, explicit::file).getMessage());
  }

  @Test
  void eachFolderOfTheSearchPathIsAPlaceAndEmptyOnesAreNone() throws IOException {
    List<LibraryPlace> places = LibraryPlaces.inOrder();
    assertEquals(Paths.get("/one/tesselnative.dll"), places.get(1).file());
    assertEquals(Paths.get("/two/tesselnative.dll"), places.get(2).file());
  }

  @Test
  void besideTheJarIsTheFolderOfTheClasses() throws Exception {
    Path classes = Paths.get(NativeLibrary.class.getProtectionDomain().getCodeSource().getLocation().toURI());
    assertEquals(classes.resolveSibling("tesselnative.dll"), LibraryPlaces.besideJar(NativeLibrary.class));
  }

  @Test
  void aClassWithoutAPlaceHasNothingBesideIt() {
    IOException failure = assertThrows(IOException.class, () -> LibraryPlaces.besideJar(String.class));
    assertEquals("the place of the jar is not known", failure.getMessage());
  }

  @Test
  void aJarThatWasBuiltWithoutTheLibrarySaysSo() {
    IOException failure = assertThrows(IOException.class, () -> LibraryPlaces.unpacked("/com/kelvo/tessel/none.dll"));
    assertEquals("this jar was built without the library", failure.getMessage());
  }
}
