# Installations of the middleware beside a product, in build/<preset>/queue-manager: <variant>/product is the product's
# root, and <variant>/bin64/omni.dll the library that is found from there.
set(queue_managers ${PROJECT_BINARY_DIR}/queue-manager)
foreach(variant IN ITEMS complete with-dependency without-connect without-disconnect)
  set(target omni-${variant})
  add_library(${target} SHARED support/queuemanager/omni.cpp)
  set(folder ${queue_managers}/${variant}/bin64)
  set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME omni RUNTIME_OUTPUT_DIRECTORY ${folder}
                                             ARCHIVE_OUTPUT_DIRECTORY ${folder})
  tessel_warnings(${target})
  tessel_hardening(${target})
  file(MAKE_DIRECTORY ${queue_managers}/${variant}/product)
  add_dependencies(test_support ${target})
endforeach()
# One that needs another library from its own folder, which the system looks for in the search path only.
add_library(omni-needed SHARED support/queuemanager/needed.cpp)
set_target_properties(omni-needed PROPERTIES PREFIX "" RUNTIME_OUTPUT_DIRECTORY ${queue_managers}/with-dependency/bin64
                                             ARCHIVE_OUTPUT_DIRECTORY ${queue_managers}/with-dependency/bin64)
tessel_warnings(omni-needed)
tessel_hardening(omni-needed)
target_compile_definitions(omni-with-dependency PRIVATE QM_WITH_DEPENDENCY)
target_link_libraries(omni-with-dependency PRIVATE omni-needed)
target_compile_definitions(omni-without-connect PRIVATE QM_WITHOUT_CONNECT)
target_compile_definitions(omni-without-disconnect PRIVATE QM_WITHOUT_DISCONNECT)
target_compile_definitions(test_support PUBLIC TESSEL_QUEUE_MANAGERS="${drive}${queue_managers}")
