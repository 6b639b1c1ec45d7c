# Installations of the middleware beside a product, in build/<preset>/queue-manager: <variant>/product is the product's
# root, and <variant>/bin64/omni.dll the library that is found from there.
set(queue_managers ${PROJECT_BINARY_DIR}/queue-manager)
foreach(variant IN ITEMS complete without-connect without-disconnect)
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
target_compile_definitions(omni-without-connect PRIVATE QM_WITHOUT_CONNECT)
target_compile_definitions(omni-without-disconnect PRIVATE QM_WITHOUT_DISCONNECT)
target_compile_definitions(test_support PUBLIC TESSEL_QUEUE_MANAGERS="${drive}${queue_managers}")
