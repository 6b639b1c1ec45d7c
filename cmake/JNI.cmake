# tessel_jni: an interface target for the headers of the Java Native Interface.
#
# jni.h is the same on every system and comes from an installed JDK; jni_md.h, which names the types and the calling
# convention of the system, comes with the JDK on the host and from this project for Windows. Both are copied into the
# build tree, for the reason that cmake/HostHeaders.cmake gives.
file(GLOB jdks /usr/lib/jvm/*/include)
list(SORT jdks)
find_path(
  TESSEL_JNI_INCLUDE_DIR jni.h
  HINTS $ENV{JAVA_HOME}/include
  PATHS ${jdks}
  NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
  DOC "Folder of the JDK's jni.h")
if(NOT TESSEL_JNI_INCLUDE_DIR)
  message(
    FATAL_ERROR
      "No JDK was found: jni.h is neither in $JAVA_HOME/include nor in /usr/lib/jvm/*/include. Install one, on Debian "
      "openjdk-17-jdk-headless, or set JAVA_HOME or TESSEL_JNI_INCLUDE_DIR.")
endif()

if(WIN32)
  set(machine_header ${PROJECT_SOURCE_DIR}/cmake/jni_md.h)
else()
  set(machine_header ${TESSEL_JNI_INCLUDE_DIR}/linux/jni_md.h)
endif()
set(headers ${PROJECT_BINARY_DIR}/host-headers/jni)
configure_file(${TESSEL_JNI_INCLUDE_DIR}/jni.h ${headers}/jni.h COPYONLY)
configure_file(${machine_header} ${headers}/jni_md.h COPYONLY)
add_library(tessel_jni INTERFACE)
target_include_directories(tessel_jni SYSTEM INTERFACE ${headers})
