# Runs server and client at once, the server's output being the client's input: the server's line "ready" comes when
# clients can connect, and is the name to be greeted.
string(RANDOM LENGTH 12 service)
execute_process(
  COMMAND ${EMULATOR} ${SERVER} greeter-${service} 1
  COMMAND ${EMULATOR} ${CLIENT} greeter-${service}
  OUTPUT_VARIABLE output
  ERROR_VARIABLE error
  RESULTS_VARIABLE results)
string(STRIP "${output}" output)
if(NOT output STREQUAL "Hello, ready!" OR NOT results STREQUAL "0;0")
  message(FATAL_ERROR "exit codes ${results}, output '${output}', error output '${error}'")
endif()
message(STATUS "${output}")
