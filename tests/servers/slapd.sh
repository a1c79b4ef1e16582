#!/usr/bin/env bash
# An LDAP server with the people of tests/suite/membership/people.ldif; see lib.sh for its use.
# STATE tells: url (StartTLS is offered there), tls_url (TLS from the start), ca (the authority to trust).
. "$(dirname "$0")/lib.sh"

server_name=slapd
server_account=openldap
server_stop_signal=INT
sources=$(realpath "$(dirname "$0")/../..")

tls_port() { cat "$folder/tls_port"; }

# The people of dc=elsewhere, or all others: a database takes its own part only.
people() {
  awk -v RS= -v ORS='\n\n' -v elsewhere="$1" '/version: 1/ { next } (/dc=elsewhere/ ? 1 : 0) == elsewhere' \
    "$sources/tests/suite/membership/people.ldif"
}

server_create() {
  free_port >"$folder/tls_port"
  as_account mkdir "$folder/site" "$folder/elsewhere"
  chmod 755 "$folder"
  as_account openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=127.0.0.1" \
    -addext "subjectAltName=IP:127.0.0.1" -keyout "$folder/key.pem" -out "$folder/ca.pem" 2>/dev/null
  as_account tee "$folder/orvane.schema" <"$sources/schema/orvane.schema" >/dev/null
  as_account tee "$folder/slapd.conf" >/dev/null <<CONF
include /etc/ldap/schema/core.schema
include /etc/ldap/schema/cosine.schema
include /etc/ldap/schema/inetorgperson.schema
include $folder/orvane.schema
modulepath /usr/lib/ldap
moduleload back_mdb
pidfile $folder/slapd.pid
TLSCertificateFile $folder/ca.pem
TLSCertificateKeyFile $folder/key.pem
disallow bind_anon
access to attrs=userPassword by anonymous auth by * none
access to dn.base="" by users read by * none
access to dn.subtree="ou=hidden,dc=site" by * none
access to * by users read by * none
database mdb
suffix "dc=site"
directory $folder/site
maxsize 16777216
index uid eq
database mdb
suffix "dc=elsewhere"
directory $folder/elsewhere
maxsize 16777216
index uid eq
CONF
  people 0 | as_account slapadd -q -f "$folder/slapd.conf" -b dc=site
  people 1 | as_account slapadd -q -f "$folder/slapd.conf" -b dc=elsewhere
}

server_command() {
  command=(slapd -d 0 -f "$folder/slapd.conf" -h "ldap://127.0.0.1:$port ldaps://127.0.0.1:$(tls_port)")
}

server_ready() { (exec 3<>"/dev/tcp/127.0.0.1/$port"); }

server_settings() {
  echo "url=ldap://127.0.0.1:$port"
  echo "tls_url=ldaps://127.0.0.1:$(tls_port)"
  echo "ca=$folder/ca.pem"
}

server_main "$@"
