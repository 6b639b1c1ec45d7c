# Targets for whoever works on the sources; scripts/test runs the same two scripts.
add_custom_target(
  format
  COMMAND ${PROJECT_SOURCE_DIR}/scripts/format
  VERBATIM USES_TERMINAL)
add_custom_target(
  format-check
  COMMAND ${PROJECT_SOURCE_DIR}/scripts/format --check
  VERBATIM USES_TERMINAL)
add_custom_target(
  tidy
  COMMAND ${PROJECT_SOURCE_DIR}/scripts/tidy ${PROJECT_BINARY_DIR}
  VERBATIM USES_TERMINAL)
