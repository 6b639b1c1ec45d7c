# Test programs that run against the DLL as it is shipped.
# A Wine program sees the host's root as drive Z.
set(drive "")
if(CMAKE_CROSSCOMPILING)
  set(drive "Z:")
endif()

file(GLOB support CONFIGURE_DEPENDS support/*.cpp)
# Not exported by the DLL: how texts of the catalogues are shown.
add_library(test_support STATIC ${support} ${PROJECT_SOURCE_DIR}/src/internal/UnicodeEscapes.cpp)
# It is looked over by clang-tidy, which cannot read precompiled headers.
set_source_files_properties(${PROJECT_SOURCE_DIR}/src/internal/UnicodeEscapes.cpp PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
target_include_directories(test_support PUBLIC ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(test_support PUBLIC TESSEL_SOURCE_DIR="${drive}${PROJECT_SOURCE_DIR}")
target_link_libraries(test_support PUBLIC tesselnative GTest::gtest GTest::gmock)
tessel_warnings(test_support)
tessel_hardening(test_support)
# Most of a test's compile time is its headers and its optimisation; what is tested is the DLL.
target_precompile_headers(test_support PRIVATE <gmock/gmock.h>)
include(queuemanager.cmake)
include(processes.cmake)
target_compile_options(test_support PUBLIC $<$<CXX_COMPILER_ID:GNU>:-O1>)

# tessel_test_program(<target> <folder>): a program of every source in the folder; none when there is no source.
function(tessel_test_program target folder)
  file(GLOB sources CONFIGURE_DEPENDS ${folder}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${target} ${sources})
  target_link_libraries(${target} PRIVATE test_support)
  target_precompile_headers(${target} REUSE_FROM test_support)
  add_dependencies(${target} product)
  tessel_warnings(${target})
  tessel_hardening(${target})
  add_test(NAME ${target} COMMAND ${target})
  set_tests_properties(
    ${target}
    PROPERTIES ENVIRONMENT
               "KTB_PROD=${drive}${TESSEL_PRODUCT_DIR};WINEDEBUG=-all;WINEDLLOVERRIDES=winedbg.exe=d,mscoree=d,mshtml=d"
               PASS_REGULAR_EXPRESSION "[[]  PASSED  []] [1-9][0-9]* tests?[.]"
               FAIL_REGULAR_EXPRESSION "[[]  FAILED  []]")
endfunction()

tessel_test_program(unit_tests unit)
tessel_test_program(system_tests system)
tessel_test_program(fault_tests faults)
tessel_test_program(jvm_tests jvm)
include(jvm/jvm.cmake)
include(languages/languages.cmake)
