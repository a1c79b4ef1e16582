#!/usr/bin/env bash
# completion.sh STAGE: what bash completes of a command line; whether zsh can read its script.
set -euo pipefail
stage=$1
# shellcheck source=/dev/null
. "$stage/share/bash-completion/completions/orvane-host"

# completed WORD...: what the last word may become.
completed() {
  COMP_WORDS=(orvane-host "$@")
  COMP_CWORD=$#
  _orvane_host
  echo "${COMPREPLY[*]}"
}
expect() {
  local expected=$1 found
  shift
  found=$(completed "$@")
  [ "$found" = "$expected" ] || { echo "\"$*\" becomes \"$found\", not \"$expected\""; exit 1; }
}
cd "$stage"
expect 'preview' prev
expect 'Archive' run A
expect 'keys rows off' run --journal ''
expect '--journal' run --jo
expect '--home' status --ho
expect 'bin' run --home b
expect 'nobody' init --owner nobod
expect 'DormantUserExpiry' preview --home /h D
expect '' list ''
# Every command and every option of the help is there.
"$stage/bin/orvane-host" help | grep -oE '^  orvane-host [a-z-]+|--[a-z-]+' | while read -r program word; do
  case $program in
    --*) grep -q -- "$program" share/zsh/vendor-completions/_orvane-host || { echo "zsh: no $program"; exit 1; } ;;
    *) completed "$word" | grep -qx -- "$word" || { echo "bash: no $word"; exit 1; } ;;
  esac
done
if command -v zsh >/dev/null; then zsh -n share/zsh/vendor-completions/_orvane-host; fi
