# tessel_trace_page(<variable>): the source that holds the page of the trace viewer, made from its parts.
# The file is also the script that makes it: cmake -DPAGE=<folder> -DOUT=<source> -P TracePage.cmake
function(tessel_trace_page variable)
  set(page ${PROJECT_SOURCE_DIR}/tools/tesselctl/trace/page)
  set(script ${PROJECT_SOURCE_DIR}/cmake/TracePage.cmake)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/TracePage.cpp)
  file(GLOB parts CONFIGURE_DEPENDS ${page}/*)
  add_custom_command(
    OUTPUT ${source}
    COMMAND ${CMAKE_COMMAND} -DPAGE=${page} -DOUT=${source} -P ${script}
    DEPENDS ${parts} ${script}
    VERBATIM)
  set(${variable} ${source} PARENT_SCOPE)
endfunction()

if(NOT CMAKE_SCRIPT_MODE_FILE)
  return()
endif()

file(READ ${PAGE}/page.html html)
file(READ ${PAGE}/page.css style)
file(GLOB scripts ${PAGE}/*.js)
list(SORT scripts)
set(script "")
foreach(part IN LISTS scripts)
  file(READ ${part} text)
  string(APPEND script "${text}")
endforeach()
string(REPLACE "@TRACE_STYLE@" "${style}" html "${html}")
string(REPLACE "@TRACE_SCRIPT@" "${script}" html "${html}")

# Bytes and no string literal: those may not be long everywhere.
file(WRITE ${OUT}.html "${html}")
file(READ ${OUT}.html bytes HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
string(REPLACE "'\\x0a'," "'\\x0a',\n" bytes "${bytes}")
file(WRITE ${OUT}
     "#include \"trace/TracePage.h\"\n\nnamespace tesselctl::trace {\nnamespace {\n\n"
     "constexpr char kPage[] = {\n${bytes}\n};\n\n}  // namespace\n\n"
     "std::string_view tracePage() { return {kPage, sizeof(kPage)}; }\n\n}  // namespace tesselctl::trace\n")
