#!/usr/bin/env bash
# One node of a MariaDB Galera cluster for the tests; see lib.sh for its use. With ORVANE_CLUSTER=ADDRESS[,ADDRESS...] in its
# environment the node joins the cluster of those nodes, without it begins one.
# STATE tells: connection (as mariadb.sh), port, folder, address (by which others join).
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/mariadb_data.sh"

server_name=galera
server_account=mysql
server_removal_signal=KILL  # nothing is saved of what is thrown away
provider=/usr/lib/galera/libgalera_smm.so

server_create() {
  local group incremental transfer
  group=$(free_port) incremental=$(free_port) transfer=$(free_port)
  echo "127.0.0.1:$group" >"$folder/address"
  as_account mkdir "$folder/tmp"
  {
    echo "[mariadbd]"
    echo "datadir=$folder/data"
    echo "tmpdir=$folder/tmp"  # of its own: see mariadb.sh
    echo "socket=$folder/socket"
    echo "bind-address=127.0.0.1"
    echo "port=$port"
    echo "lower_case_table_names=1"
    echo "character-set-server=utf8mb4"
    echo "max_allowed_packet=64M"
    echo "performance-schema=off"
    # A node that crashes gets what it lacks from the others.
    echo "innodb_flush_log_at_trx_commit=2"
    echo "innodb_flush_method=nosync"
    echo "innodb_doublewrite=0"
    # What certification needs.
    echo "binlog_format=ROW"
    echo "innodb_autoinc_lock_mode=2"
    echo "wsrep_on=ON"
    echo "wsrep_provider=$provider"
    echo "wsrep_cluster_name=orvane"
    echo "wsrep_cluster_address=gcomm://${ORVANE_CLUSTER:-}"
    echo "wsrep_node_address=127.0.0.1"
    echo "wsrep_provider_options=\"gmcast.listen_addr=tcp://127.0.0.1:$group;ist.recv_addr=127.0.0.1:$incremental;gcache.size=16M\""
    echo "wsrep_sst_method=rsync"
    echo "wsrep_sst_receive_address=127.0.0.1:$transfer"
  } >"$folder/my.cnf"
  chmod 644 "$folder/my.cnf"
  server_data mariadb_data make_mariadb_data
}

server_command() {
  command=(mariadbd --defaults-file="$folder/my.cnf")
  [ -n "${ORVANE_CLUSTER:-}" ] || command+=(--wsrep-new-cluster)
}

# It answers, and has the others' data.
server_ready() {
  mariadb --no-defaults --protocol=tcp --host=127.0.0.1 --port="$port" --user=orvane_owner --password=owner-secret \
    --skip-column-names --execute="SHOW STATUS LIKE 'wsrep_local_state_comment'" | grep -q Synced
}

server_settings() {
  echo "connection=Driver={MariaDB Unicode};Server=127.0.0.1;Port=$port;UID=orvane_owner;PWD=owner-secret"
  echo "address=$(cat "$folder/address")"
}

server_main "$@"
