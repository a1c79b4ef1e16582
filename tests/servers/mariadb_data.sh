# The first data of a MariaDB server, with its owner's account. Sourced, never run.
make_mariadb_data() {
  as_account mariadb-install-db --defaults-file="$folder/my.cnf" --wsrep-on=OFF --auth-root-authentication-method=normal \
    --skip-test-db >"$folder/install.log" 2>&1 || { cat "$folder/install.log"; return 1; }
  as_account mariadbd --defaults-file="$folder/my.cnf" --wsrep-on=OFF --bootstrap >"$folder/bootstrap.log" 2>&1 <<'SQL' ||
FLUSH PRIVILEGES;
CREATE USER orvane_owner@'%' IDENTIFIED BY 'owner-secret';
GRANT ALL PRIVILEGES ON *.* TO orvane_owner@'%' WITH GRANT OPTION;
SQL
    { cat "$folder/bootstrap.log"; return 1; }
}
