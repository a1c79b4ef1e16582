#!/usr/bin/env bash
# A PostgreSQL server for the tests; see lib.sh for its use.
# STATE tells: connection (an ODBC connection string of the owner, without the database), port, folder.
. "$(dirname "$0")/lib.sh"

server_name=postgresql
server_account=postgres
server_stop_signal=INT     # the stop that does not wait for clients to leave
server_removal_signal=QUIT  # the one that does not save what is thrown away
bin=$(printf '%s\n' /usr/lib/postgresql/*/bin | sort -V | tail -n 1)

make_data() {
  # Tests open thousands of connections, and each costs ten milliseconds of hashing with the passwords of production.
  local secret=$folder/secret auth=md5
  [ -z "$durable" ] || auth=scram-sha-256
  (umask 077 && echo owner-secret >"$secret")
  [ "$(id -u)" -ne 0 ] || chown "$server_account" "$secret"
  as_account "$bin/initdb" --pgdata="$folder/data" --username=orvane_owner --pwfile="$secret" --encoding=UTF8 \
    --locale=C.UTF-8 --auth="$auth" --no-sync >"$folder/initdb.log" || { cat "$folder/initdb.log"; return 1; }
  rm -f "$secret"
}

server_create() {
  server_data postgresql make_data || return 1
  {
    echo "unix_socket_directories = '$folder'"
    echo "listen_addresses = '127.0.0.1'"
    echo "port = $port"
    echo "deadlock_timeout = 200ms"
    # For tests only: a power cut would cost the whole database. A crash of the server alone costs nothing.
    # For benchmarks: memory for the whole database, as a server has it that serves one of this size.
    if [ -z "$durable" ]; then printf 'fsync = off\nfull_page_writes = off\n'; else echo 'shared_buffers = 1GB'; fi
    # New statistics may change the order of a query without one, and would do so between two steps of a test.
    [ -n "$durable" ] || echo 'autovacuum = off'
    # A large machine runs as many suites side by side as it has processors, each with some sessions.
    [ -n "$durable" ] || echo 'max_connections = 400'
  } | as_account tee -a "$folder/data/postgresql.conf" >/dev/null
}

server_command() { command=("$bin/postgres" -D "$folder/data"); }

server_ready() { "$bin/pg_isready" --quiet --host="$folder" --port="$port"; }

server_settings() {
  echo "connection=Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=$port;UID=orvane_owner;PWD=owner-secret"
}

server_main "$@"
