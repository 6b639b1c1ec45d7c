# The DLL, and the product folder its message catalogues are read from.
file(GLOB windows_sources CONFIGURE_DEPENDS src/platform/pc/share/*.cpp src/internal/pc/*.cpp)

add_library(tesselnative SHARED ${TESSEL_PORTABLE_SOURCES} ${windows_sources})
add_library(TesselNative::tesselnative ALIAS tesselnative)
# No "lib" prefix: Java's System.loadLibrary("tesselnative") looks for tesselnative.dll.
set_target_properties(tesselnative PROPERTIES PREFIX "")
target_compile_definitions(tesselnative PRIVATE TESSEL_BUILD)
target_compile_features(tesselnative PUBLIC cxx_std_20)
target_include_directories(
  tesselnative
  PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
  PRIVATE src ${PROJECT_BINARY_DIR}/generated)
target_link_libraries(tesselnative PRIVATE $<BUILD_INTERFACE:tessel_jni>)
tessel_warnings(tesselnative)
tessel_hardening(tesselnative)
tessel_inline_copies(tesselnative)
tessel_version_resource(tesselnative "${PROJECT_DESCRIPTION}")

set(TESSEL_PRODUCT_DIR ${PROJECT_BINARY_DIR}/product)
file(GLOB catalogues CONFIGURE_DEPENDS resources/messages/*.properties)
set(copies "")
foreach(catalogue IN LISTS catalogues)
  get_filename_component(name ${catalogue} NAME)
  set(copy ${TESSEL_PRODUCT_DIR}/lib/messages/${name})
  add_custom_command(
    OUTPUT ${copy}
    COMMAND ${CMAKE_COMMAND} -E copy ${catalogue} ${copy}
    DEPENDS ${catalogue}
    VERBATIM)
  list(APPEND copies ${copy})
endforeach()
add_custom_target(product ALL DEPENDS ${copies})
