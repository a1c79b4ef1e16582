#!/usr/bin/env bash
# The server of vsftpd.sh, which here speaks TLS from the first byte on.
server_name=ftps
tls=implicit
. "$(dirname "$0")/vsftpd.sh"
