# orvane_server(NAME)
# CTest fixture NAME: tests/servers/NAME.sh starts a server before the first test that requires it and stops it after
# the last. The state file that tells how to reach it is ORVANE_SERVERS_DIR/NAME.server.
set(ORVANE_SERVERS_DIR "${CMAKE_BINARY_DIR}/servers")

function(orvane_server name)
  set(command "${PROJECT_SOURCE_DIR}/tests/servers/${name}.sh")
  set(state "${ORVANE_SERVERS_DIR}/${name}.server")
  add_test(NAME server.${name}.start COMMAND "${command}" start "${state}")
  add_test(NAME server.${name}.stop COMMAND "${command}" stop "${state}")
  set_tests_properties(server.${name}.start PROPERTIES FIXTURES_SETUP ${name} LABELS server TIMEOUT 600
    ENVIRONMENT "ORVANE_SERVER_TEMPLATES=${ORVANE_SERVERS_DIR}/templates")
  set_tests_properties(server.${name}.stop PROPERTIES FIXTURES_CLEANUP ${name} LABELS server TIMEOUT 600)
endfunction()

# orvane_test_on_servers(NAME [EXCEPT filter])
# Runs the test program NAME, which uses the databases of tests/support, a second and a third time with its databases on
# PostgreSQL and MariaDB: tests "postgresql.NAME.Suite". EXCEPT is a GoogleTest filter for the tests that are about the
# embedded engine itself.
function(orvane_test_on_servers name)
  cmake_parse_arguments(ARG "" "EXCEPT" "" ${ARGN})
  if(ARG_EXCEPT)
    set(ARG_EXCEPT "-${ARG_EXCEPT}")
  endif()
  foreach(server postgresql mariadb)
    orvane_test_suites(${server}.${name} PROGRAM ${name} FILTER "${ARG_EXCEPT}"
      LABELS server FIXTURES ${server} ENVIRONMENT "ORVANE_TEST_ENGINE=${server}")
  endforeach()
endfunction()
