# Writes internal/BuildInfo.h with the build level: the version and the commit the build was configured at.
find_package(Git QUIET)
set(commit "")
if(Git_FOUND)
  execute_process(
    COMMAND ${GIT_EXECUTABLE} rev-parse --short HEAD
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    OUTPUT_VARIABLE commit
    OUTPUT_STRIP_TRAILING_WHITESPACE
    ERROR_QUIET
    RESULT_VARIABLE result)
  if(result EQUAL 0)
    # A commit changes the reflog of HEAD: configure again then.
    execute_process(
      COMMAND ${GIT_EXECUTABLE} rev-parse --git-path logs/HEAD
      WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
      OUTPUT_VARIABLE reflog
      OUTPUT_STRIP_TRAILING_WHITESPACE)
    get_filename_component(reflog "${reflog}" ABSOLUTE BASE_DIR ${PROJECT_SOURCE_DIR})
    if(EXISTS "${reflog}")
      set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${reflog}")
    endif()
  else()
    set(commit "")
  endif()
endif()
if(NOT commit)
  set(commit "unknown")
endif()
set(TESSEL_BUILD_LEVEL "${PROJECT_VERSION}-${commit}")
configure_file(cmake/BuildInfo.h.in generated/internal/BuildInfo.h @ONLY)
