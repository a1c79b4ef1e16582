#!/bin/bash
# Makes and sends mails the way a script would: xsltproc for the page, curl for the sending.
#
#   shell_loop.sh WORK SHEET COUNT pickup FOLDER
#   shell_loop.sh WORK SHEET COUNT smtp PORT
#
# WORK/document.xml is the mail document, WORK/parameters holds one "name<tab>text" a line, WORK/body the text.
set -euo pipefail
work=$1 sheet=$2 count=$3 way=$4 target=$5

parameters=()
while IFS=$'\t' read -r name text; do
  parameters+=(--stringparam "$name" "$text")
done <"$work/parameters"

for ((i = 1; i <= count; i++)); do
  xsltproc "${parameters[@]}" "$sheet" "$work/document.xml" >"$work/page.htm"
  mail=$work/mail.eml
  [ "$way" = smtp ] || mail=$target/$i.eml
  {
    printf 'From: support@example.com\nTo: customer@example.org\nSubject: Reminder (%d) \n' "$i"
    printf 'MIME-Version: 1.0\nContent-Type: multipart/mixed; boundary="=_next"\n\n--=_next\n'
    printf 'Content-Type: text/plain; charset=us-ascii\n\n%s\n--=_next\n' "$(<"$work/body")"
    printf 'Content-Type: text/html\nContent-Transfer-Encoding: base64\n'
    printf 'Content-Disposition: attachment; filename="page.htm"\n\n'
    base64 "$work/page.htm"
    printf '\n--=_next--\n'
  } >"$mail"
  if [ "$way" = smtp ]; then
    curl -sS --crlf --url "smtp://127.0.0.1:$target" --mail-from support@example.com --mail-rcpt customer@example.org \
      --upload-file "$mail"
  fi
done
