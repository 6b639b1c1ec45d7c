# Install rules, package configuration and the ZIP. The install prefix is a product root: it holds lib/messages.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/TesselNative)

install(
  TARGETS tesselnative
  EXPORT TesselNativeTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/tessel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# Not CMAKE_INSTALL_LIBDIR: the library itself looks for lib/messages.
install(
  DIRECTORY resources/messages
  DESTINATION lib
  FILES_MATCHING
  PATTERN "*.properties"
  PATTERN "src" EXCLUDE)
install(
  DIRECTORY docs/messages
  DESTINATION ${CMAKE_INSTALL_DOCDIR}
  FILES_MATCHING
  PATTERN "*.html")
# Built by Maven beforehand: mvn -f java/pom.xml -Dtessel.dll.folder=<folder of the DLL> package
set(jars ${PROJECT_SOURCE_DIR}/java/target/tessel-native-${PROJECT_VERSION})
install(FILES ${jars}.jar ${jars}-sources.jar ${jars}-javadoc.jar DESTINATION ${CMAKE_INSTALL_DATADIR}/java OPTIONAL)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
if(TARGET tesselctl)
  install(TARGETS tesselctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(
  EXPORT TesselNativeTargets
  NAMESPACE TesselNative::
  DESTINATION ${package_dir})
configure_package_config_file(
  cmake/TesselNativeConfig.cmake.in ${PROJECT_BINARY_DIR}/TesselNativeConfig.cmake
  INSTALL_DESTINATION ${package_dir}
  PATH_VARS CMAKE_INSTALL_PREFIX)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TesselNativeConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TesselNativeConfig.cmake
              ${PROJECT_BINARY_DIR}/TesselNativeConfigVersion.cmake DESTINATION ${package_dir})

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME tessel-native)
set(CPACK_PACKAGE_FILE_NAME tessel-native-${PROJECT_VERSION}-windows-x86_64)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
include(CPack)
