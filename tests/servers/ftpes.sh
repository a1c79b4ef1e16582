#!/usr/bin/env bash
# The server of vsftpd.sh, which here demands TLS by AUTH before the login.
server_name=ftpes
tls=explicit
. "$(dirname "$0")/vsftpd.sh"
