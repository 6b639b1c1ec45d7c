# The child that the tests of process launching start. It needs no DLL beside it, and starts fast.
add_executable(process_child support/process/child.cpp)
target_link_options(process_child PRIVATE -static)
tessel_warnings(process_child)
tessel_hardening(process_child)
add_dependencies(test_support process_child)
target_compile_definitions(test_support PUBLIC TESSEL_PROCESS_CHILD="${drive}${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/process_child.exe")

# The example that keeps a program running, for the tests that kill it.
file(GLOB controller_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/examples/cpp/controller/*.cpp)
add_executable(controller ${controller_sources})
target_link_libraries(controller PRIVATE tesselnative)
tessel_warnings(controller)
tessel_hardening(controller)
add_dependencies(test_support controller)
target_compile_definitions(test_support PUBLIC TESSEL_CONTROLLER="${drive}${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/controller.exe")
