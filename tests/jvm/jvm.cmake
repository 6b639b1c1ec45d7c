# The Java classes that jvm_tests runs against, and what its sources need besides.
if(NOT TARGET jvm_tests)
  return()
endif()

file(GLOB jdk_programs /usr/lib/jvm/*/bin)
find_program(
  TESSEL_JAVAC javac
  HINTS $ENV{JAVA_HOME}/bin
  PATHS ${jdk_programs} REQUIRED)
file(GLOB_RECURSE java_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/java/*.java)
# The exceptions of the messaging are those of the jar.
file(GLOB ipc_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/java/src/main/java/com/kelvo/tessel/ipc/*.java)
list(APPEND java_sources ${ipc_sources})
set(classes ${CMAKE_CURRENT_BINARY_DIR}/jvm-classes)
add_custom_command(
  OUTPUT ${classes}.stamp
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${classes}
  COMMAND ${TESSEL_JAVAC} --release 8 -Xlint:all,-options -Werror -d ${classes} ${java_sources}
  COMMAND ${CMAKE_COMMAND} -E touch ${classes}.stamp
  DEPENDS ${java_sources}
  VERBATIM)
add_custom_target(jvm_test_classes DEPENDS ${classes}.stamp)
add_dependencies(jvm_tests jvm_test_classes)
target_compile_definitions(jvm_tests PRIVATE TESSEL_JVM_CLASSES="${drive}${classes}")
target_link_libraries(jvm_tests PRIVATE tessel_jni)
