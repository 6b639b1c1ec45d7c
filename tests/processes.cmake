# The child that the tests of process launching start. It needs no DLL beside it, and starts fast.
add_executable(process_child support/process/child.cpp)
target_link_options(process_child PRIVATE -static)
tessel_warnings(process_child)
tessel_hardening(process_child)
add_dependencies(test_support process_child)
target_compile_definitions(test_support PUBLIC TESSEL_PROCESS_CHILD="${drive}${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/process_child.exe")
