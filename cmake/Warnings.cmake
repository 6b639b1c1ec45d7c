# tessel_warnings(<target>): the warnings every target of the project is built with; each is an error.
function(tessel_warnings target)
  if(MSVC)
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:/W4 /WX /permissive->)
    return()
  endif()
  # g++ 12 sees overlapping copies in plain concatenations of strings: -Wno-restrict.
  target_compile_options(
    ${target}
    PRIVATE
      $<$<COMPILE_LANGUAGE:CXX>:-Wall
      -Wextra
      -Wpedantic
      -Wshadow
      -Wconversion
      -Wsign-conversion
      -Wold-style-cast
      -Wnon-virtual-dtor
      -Woverloaded-virtual
      $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
      -Werror>)
endfunction()
