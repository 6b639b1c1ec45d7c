# tessel_hardening(<target>): run-time protection, and output that depends on the sources only.
function(tessel_hardening target)
  if(MSVC)
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:/GS /guard:cf>)
    target_link_options(${target} PRIVATE /guard:cf)
    return()
  endif()
  target_compile_options(
    ${target}
    PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU,Clang>:-fvisibility=hidden
            -fvisibility-inlines-hidden
            $<$<CONFIG:Release>:-fstack-protector-strong
            -U_FORTIFY_SOURCE
            -D_FORTIFY_SOURCE=2
            -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
            -ffile-prefix-map=${PROJECT_BINARY_DIR}=build>>)
  if(WIN32)
    # The run-time is linked statically: the DLL then needs nothing beside it that a machine may lack.
    # The compiler adds the library behind the stack protector only when it links with the option, too.
    target_link_options(
      ${target} PRIVATE -static -Wl,--no-insert-timestamp $<$<CONFIG:Release>:-fstack-protector-strong>)
  endif()
endfunction()
