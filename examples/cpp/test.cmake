# Runs server and client at once, the server's output being the client's input: the server's line "ready" comes when
# clients can connect, and is the name to be greeted.
string(RANDOM LENGTH 12 service)
set(logs ${CMAKE_CURRENT_BINARY_DIR}/logs-${service})
execute_process(
  COMMAND ${EMULATOR} ${SERVER} greeter-${service} 1 ${DRIVE}${logs}
  COMMAND ${EMULATOR} ${CLIENT} greeter-${service}
  OUTPUT_VARIABLE output
  ERROR_VARIABLE error
  RESULTS_VARIABLE results)
string(STRIP "${output}" output)
if(NOT output STREQUAL "Hello, ready!" OR NOT results STREQUAL "0;0")
  message(FATAL_ERROR "exit codes ${results}, output '${output}', error output '${error}'")
endif()
file(STRINGS ${logs}/event0.log banner LIMIT_COUNT 1)
file(STRINGS ${logs}/trace0.log answers REGEX "IPCClientRunnable.* {  answer")
if(NOT banner MATCHES "Start of event log" OR NOT answers)
  message(FATAL_ERROR "the event log begins with '${banner}', the trace has '${answers}'")
endif()
message(STATUS "${output}")
