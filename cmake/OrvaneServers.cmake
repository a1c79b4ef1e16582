# orvane_server(NAME)
# CTest fixture NAME: tests/servers/NAME.sh starts a server before the first test that requires it and stops it after
# the last. The state file that tells how to reach it is ORVANE_SERVERS_DIR/NAME.server.
set(ORVANE_SERVERS_DIR "${CMAKE_BINARY_DIR}/servers")

function(orvane_server name)
  set(command "${PROJECT_SOURCE_DIR}/tests/servers/${name}.sh")
  set(state "${ORVANE_SERVERS_DIR}/${name}.server")
  add_test(NAME server.${name}.start COMMAND "${command}" start "${state}")
  add_test(NAME server.${name}.stop COMMAND "${command}" stop "${state}")
  set_tests_properties(server.${name}.start PROPERTIES FIXTURES_SETUP ${name} LABELS server TIMEOUT 120)
  set_tests_properties(server.${name}.stop PROPERTIES FIXTURES_CLEANUP ${name} LABELS server TIMEOUT 120)
endfunction()
