# tessel_inline_copies(<target>): copies strings where they are used. With mingw the C library is a DLL, and to call it for
# the few bytes of a name takes longer than to copy them; long texts lose nothing.
function(tessel_inline_copies target)
  if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(
      ${target}
      PRIVATE
        "$<$<AND:$<CONFIG:Release>,$<COMPILE_LANGUAGE:CXX>>:-minline-all-stringops;-mmemcpy-strategy=unrolled_loop:-1:noalign>"
    )
  endif()
endfunction()
