#!/usr/bin/env bash
# An LDAP server with a few people of "dc=site"; see lib.sh for its use.
# STATE tells: url.
. "$(dirname "$0")/lib.sh"

server_name=slapd
server_account=openldap
server_stop_signal=INT
schema=$(realpath "$(dirname "$0")/../../schema/orvane.schema")

server_create() {
  as_account mkdir "$folder/data"
  chmod 755 "$folder"
  as_account tee "$folder/orvane.schema" <"$schema" >/dev/null
  as_account tee "$folder/slapd.conf" >/dev/null <<CONF
include /etc/ldap/schema/core.schema
include /etc/ldap/schema/cosine.schema
include /etc/ldap/schema/inetorgperson.schema
include $folder/orvane.schema
modulepath /usr/lib/ldap
moduleload back_mdb
pidfile $folder/slapd.pid
disallow bind_anon
database mdb
suffix "dc=site"
directory $folder/data
maxsize 16777216
access to attrs=userPassword by anonymous auth by * none
access to dn.subtree="ou=hidden,dc=site" by * none
access to * by users read by * none
CONF
  as_account slapadd -q -f "$folder/slapd.conf" <<'LDIF'
dn: dc=site
objectClass: dcObject
objectClass: organization
dc: site
o: Site

dn: cn=orvane,dc=site
objectClass: organizationalRole
objectClass: simpleSecurityObject
cn: orvane
userPassword: secret

dn: ou=people,dc=site
objectClass: organizationalUnit
ou: people

dn: ou=hidden,dc=site
objectClass: organizationalUnit
ou: hidden

dn: uid=jdoe,ou=people,dc=site
objectClass: inetOrgPerson
objectClass: orvanePerson
uid: jdoe
cn: Jane Doe
givenName: Jane
sn: Doe
mail: jane@x.example
o: Harbour Works
telephoneNumber: +44 1
title: Lead
facsimileTelephoneNumber: +44 2
orvaneLanguageID: 1043
orvaneLocale: 2057
orvaneBusinessPartner: 1042
orvaneEngineerCode: eng-17
orvaneSalutationFlag: TRUE
orvaneModem: +44 3
orvaneCountry: United Kingdom

dn: uid=hm,ou=people,dc=site
objectClass: inetOrgPerson
uid: hm
cn:: SGVsZ2EgTcO8bGxlcg==
sn:: TcO8bGxlcg==

dn: cn=Odd,ou=people,dc=site
objectClass: inetOrgPerson
uid: odd(*)\
cn: Odd
sn: Odd

dn: cn=one,ou=people,dc=site
objectClass: inetOrgPerson
uid: twin
cn: one
sn: Twin

dn: cn=two,ou=people,dc=site
objectClass: inetOrgPerson
uid: twin
cn: two
sn: Twin

dn: uid=ghost,ou=hidden,dc=site
objectClass: inetOrgPerson
uid: ghost
cn: Ghost
sn: Ghost
LDIF
}

server_command() { command=(slapd -d 0 -f "$folder/slapd.conf" -h "ldap://127.0.0.1:$port"); }

server_ready() { (exec 3<>"/dev/tcp/127.0.0.1/$port"); }

server_settings() { echo "url=ldap://127.0.0.1:$port"; }

server_main "$@"
