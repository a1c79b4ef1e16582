#!/bin/bash
# Makes and sends mails the way a script would: xsltproc for the page, curl for the sending.
#
#   shell_loop.sh WORK SHEET COUNT smtp PORT        sent to a server
#   shell_loop.sh WORK SHEET COUNT curl FOLDER      sent into the pickup folder
#   shell_loop.sh WORK SHEET COUNT synced FOLDER    ... and synced, so that the mail survives a power cut
#   shell_loop.sh WORK SHEET COUNT written FOLDER   written into the folder without sending
#
# WORK/document.xml is the mail document and WORK/body the text, both of the question 100001; each mail gets its own.
# WORK/parameters holds one "name<tab>text" a line.
set -euo pipefail
work=$1 sheet=$2 count=$3 way=$4 target=$5

parameters=()
while IFS=$'\t' read -r name text; do
  parameters+=(--stringparam "$name" "$text")
done <"$work/parameters"
document=$(<"$work/document.xml") body=$(<"$work/body")

for ((i = 1; i <= count; i++)); do
  id=$((100000 + i))
  printf -v link '%X0' "$id"
  printf '%s' "${document//100001/$id}" >"$work/one.xml"
  xsltproc "${parameters[@]}" "$sheet" "$work/one.xml" >"$work/page.htm"
  mail=$work/mail.eml
  [ "$way" != written ] || mail=$target/$i.eml
  {
    printf 'From: support@example.com\nTo: customer@example.org\nSubject: Reminder (%d) \n' "$id"
    printf 'MIME-Version: 1.0\nContent-Type: multipart/mixed; boundary="=_next"\n\n--=_next\n'
    printf 'Content-Type: text/plain; charset=us-ascii\n\n%s\n--=_next\n' "${body/186A10/$link}"
    printf 'Content-Type: text/html\nContent-Transfer-Encoding: base64\n'
    printf 'Content-Disposition: attachment; filename="page.htm"\n\n'
    base64 "$work/page.htm"
    printf '\n--=_next--\n'
  } >"$mail"
  case $way in
    smtp)
      curl -sS --crlf --url "smtp://127.0.0.1:$target" --mail-from support@example.com \
        --mail-rcpt customer@example.org --upload-file "$mail"
      ;;
    curl | synced)
      curl -sS --upload-file "$mail" "file://$target/$i.eml"
      [ "$way" != synced ] || sync "$target/$i.eml"
      ;;
  esac
done
