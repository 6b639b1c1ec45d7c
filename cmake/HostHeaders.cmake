# tessel_host_headers(<target> <folder>): an interface target for a header-only library of the host.
#
# The host's include folder must never be searched in a cross-build: its C headers would shadow those of the target
# system. The library's own folder is copied into the build tree, and only the copy is visible.
function(tessel_host_headers target folder)
  find_path(
    TESSEL_${target}_ROOT ${folder}
    PATHS /usr/include
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  file(COPY ${TESSEL_${target}_ROOT}/${folder} DESTINATION ${PROJECT_BINARY_DIR}/host-headers/${target})
  add_library(${target} INTERFACE)
  target_include_directories(${target} SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/host-headers/${target})
endfunction()
