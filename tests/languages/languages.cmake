# The server of the test that goes through all languages; tests/languages/run.sh starts it.
add_executable(language_server languages/server.cpp)
target_link_libraries(language_server PRIVATE tesselnative)
tessel_warnings(language_server)
tessel_hardening(language_server)
