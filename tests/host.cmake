# The portable classes on the host, with stand-ins for the platform classes: host/*Test.cpp are tests, the other
# sources of that folder are stand-ins.
file(GLOB host_sources CONFIGURE_DEPENDS host/*.cpp)
set(host_tests ${host_sources})
list(FILTER host_tests INCLUDE REGEX "Test\\.cpp$")
set(stand_ins ${host_sources})
list(FILTER stand_ins EXCLUDE REGEX "Test\\.cpp$")

# The native methods of Java call the whole library; they are tested in a Windows virtual machine.
list(FILTER TESSEL_PORTABLE_SOURCES EXCLUDE REGEX "/Native(IPCClient|IPCServer|JNI)\\.cpp$")
# Objects, not an archive: as in the DLL, a source nobody refers to still registers its descriptor.
add_library(tessel_host OBJECT ${TESSEL_PORTABLE_SOURCES} ${stand_ins})
target_compile_definitions(tessel_host PUBLIC TESSEL_BUILD TESSEL_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
target_include_directories(tessel_host PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src
                                              ${PROJECT_BINARY_DIR}/generated ${CMAKE_CURRENT_SOURCE_DIR})
find_package(Threads REQUIRED)
target_link_libraries(tessel_host PUBLIC Threads::Threads tessel_jni)
tessel_warnings(tessel_host)

# The trace viewer of the operators' tool needs no Windows either.
set(tool ${PROJECT_SOURCE_DIR}/tools/tesselctl)
file(GLOB viewer_sources CONFIGURE_DEPENDS ${tool}/trace/*.cpp)
include(${PROJECT_SOURCE_DIR}/cmake/TracePage.cmake)
tessel_trace_page(viewer_page)
target_sources(tessel_host PRIVATE ${viewer_sources} ${viewer_page})
target_include_directories(tessel_host PUBLIC ${tool})

# PORTABLE_TESTS: the sources of unit/ that need no Windows.
include(host/portable.cmake OPTIONAL)
list(TRANSFORM PORTABLE_TESTS PREPEND unit/)
if(TESSEL_FUZZ)
  # libFuzzer brings its own main; the tests run in the other host presets.
  set(host_tests "")
  set(PORTABLE_TESTS "")
endif()
if(host_tests OR PORTABLE_TESTS)
  add_executable(host_tests ${host_tests} ${PORTABLE_TESTS})
  # Parts of the operators' tool that need no Windows either.
  target_sources(host_tests PRIVATE ${PROJECT_SOURCE_DIR}/tools/tesselctl/AccessText.cpp)
  target_include_directories(host_tests PRIVATE ${PROJECT_SOURCE_DIR}/tools)
  target_link_libraries(host_tests PRIVATE tessel_host GTest::gtest GTest::gmock_main)
  # Most of a test's compile time.
  target_precompile_headers(host_tests PRIVATE <gmock/gmock.h>)
  tessel_warnings(host_tests)
  add_test(NAME host_tests COMMAND host_tests)
endif()

file(GLOB fuzz_sources CONFIGURE_DEPENDS fuzz/fuzz_*.cpp)
foreach(source IN LISTS fuzz_sources)
  get_filename_component(target ${source} NAME_WE)
  if(TESSEL_FUZZ)
    add_executable(${target} ${source})
    target_link_options(${target} PRIVATE -fsanitize=fuzzer)
  else()
    string(REGEX REPLACE "^fuzz_" "replay_" target ${target})
    add_executable(${target} ${source} fuzz/ReplayMain.cpp)
  endif()
  target_link_libraries(${target} PRIVATE tessel_host)
  tessel_warnings(${target})
endforeach()
