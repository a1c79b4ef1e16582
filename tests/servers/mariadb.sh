#!/usr/bin/env bash
# A MariaDB server for the tests; see lib.sh for its use.
# STATE tells: connection (an ODBC connection string of the owner, without the database), port, folder.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/mariadb_data.sh"

server_name=mariadb
server_account=mysql
server_removal_signal=KILL  # nothing is saved of what is thrown away

server_create() {
  as_account mkdir "$folder/tmp"
  {
    echo "[mariadbd]"
    echo "datadir=$folder/data"
    # Of its own: a server that starts removes every temporary table in this folder, also those of another
    # server, which then crashes.
    echo "tmpdir=$folder/tmp"
    echo "socket=$folder/socket"
    echo "bind-address=127.0.0.1"
    echo "port=$port"
    # Table names that differ in case are the same table, as the jobs expect.
    echo "lower_case_table_names=1"
    echo "character-set-server=utf8mb4"
    echo "max_allowed_packet=64M"
    echo "skip-log-bin"
    echo "performance-schema=off"
    if [ -z "$durable" ]; then
      # A power cut would cost transactions; tests can live with that. A crash of the server alone costs nothing.
      echo "innodb_flush_log_at_trx_commit=2"
      echo "innodb_flush_method=nosync"
      echo "innodb_doublewrite=0"
      # For the reasons in postgresql.sh.
      echo "innodb_stats_auto_recalc=OFF"
      echo "max_connections=400"
    else
      # As a server has it that serves a database of this size; the 128 MiB of the package would not hold it.
      echo "innodb_buffer_pool_size=1G"
    fi
  } >"$folder/my.cnf"
  chmod 644 "$folder/my.cnf"
  server_data mariadb_data make_mariadb_data
}

server_command() { command=(mariadbd --defaults-file="$folder/my.cnf"); }

server_ready() {
  mariadb-admin --no-defaults --protocol=tcp --host=127.0.0.1 --port="$port" --user=orvane_owner \
    --password=owner-secret ping
}

server_settings() {
  echo "connection=Driver={MariaDB Unicode};Server=127.0.0.1;Port=$port;UID=orvane_owner;PWD=owner-secret"
}

server_main "$@"
