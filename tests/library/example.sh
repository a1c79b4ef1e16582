#!/usr/bin/env bash
# example.sh CASE STAGE EXAMPLE: one thing that the service host of examples/service-host does, on a demo suite.
set -euo pipefail
case=$1 stage=$2 example=$3
folder=$(mktemp -d)
host=
trap '[ -z "$host" ] || kill -9 "$host" 2>/dev/null || true; rm -rf "$folder"' EXIT
home=$folder/suite/home
mkdir "$folder/suite"
# Where the job has to find something to do.
case $case in
  own_log | archive | stop_in_a_run) data=--demo ;;
  *) data= ;;
esac
"$stage/bin/orvane-host" init "$home" $data >/dev/null
export LC_ALL=C.UTF-8
library=$(dirname "$(find "$stage/lib" -name 'liborvane.so' | head -n 1)")
export LD_LIBRARY_PATH=$library

fail() {
  echo "$case: $*"
  cat "$folder/said" 2>/dev/null
  exit 1
}
# Waits until the command succeeds.
await() {
  for _ in $(seq 6000); do
    if "$@"; then return 0; fi
    sleep 0.05
  done
  fail "waited in vain for: $*"
}
run_logs() { find "$folder/suite/OrvLog" -name "$1*" 2>/dev/null | grep -q .; }
journals() { find "$home/journal" -name '*.jsonl' 2>/dev/null | wc -l; }
has_journals() { [ "$(journals)" -ge "$1" ]; }
begin() {
  "$example/service-host" "$@" 2>"$folder/said" &
  host=$!
}
# ended_well WHEN: the host has come to its end, and there was no failure.
ended_well() {
  local code=0
  wait "$host" || code=$?
  host=
  [ "$code" = 0 ] || fail "ended with $code $1"
}

case $case in
  one_call)
    "$example/one-call" "$home" OrvaneProcess.DormantUserExpiry
    run_logs OrvDormantUserExpirySvc_log_ || fail "no run log"
    if "$example/one-call" "$home" OrvaneProcess.Tidy 2>"$folder/said"; then fail "an unknown class"; fi
    grep -q '(429)' "$folder/said" || fail "no number of the error"
    ;;
  once)
    "$example/service-host" "$home" OrvaneProcess.DormantUserExpiry once 2>"$folder/said"
    grep -q '^<6>OrvaneProcess.DormantUserExpiry: finished in ' "$folder/said" || fail "nothing told"
    [ "$(journals)" = 1 ] || fail "no journal"
    "$stage/bin/orvane-host" status --home "$home" --max-age 1 DormantUserExpiry >/dev/null || fail "not finished"
    ;;
  own_log)
    "$example/service-host" "$home" OrvaneProcess.CleanUp once 2>"$folder/said"
    grep -q '^<3>.*Object required' "$folder/said" || fail "the log of its own got nothing"
    [ ! -e "$folder/suite/OrvLog/Vantrel.log" ] || fail "the suite's log was written"
    ;;
  archive)
    "$example/service-host" "$home" OrvaneProcess.Archive once 2>"$folder/said"
    grep -rq 'by the service host' "$home/Data/Archives" || fail "the archive files do not name it"
    BACKEND=3 "$example/service-host" "$home" OrvaneProcess.SolveOnNoResponse once 2>"$folder/said"
    find "$home/mail/pickup" -name '*.eml' | grep -q . || fail "no mail"
    ;;
  schedule)
    begin "$home" OrvaneProcess.DormantUserExpiry 1
    await has_journals 3
    kill -TERM "$host"
    ended_well "between two runs"
    ;;
  stop_between_runs)
    begin "$home" OrvaneProcess.DormantUserExpiry 3600
    await grep -q 'finished in' "$folder/said"
    kill -TERM "$host"
    ended_well "between two runs"
    ;;
  stop_in_a_run)
    # Held back before its first deletion until it was asked to stop.
    exec 8>"$home/.lock"
    flock 8
    begin "$home" OrvaneProcess.DormantUserExpiry 3600
    await grep -q 'is held by' "$folder/said"
    kill -TERM "$host"
    ended_well "while it waited"
    [ "$(journals)" = 0 ] || fail "it has begun"
    exec 8>&-
    begin "$home" OrvaneProcess.DormantUserExpiry 3600
    await has_journals 1
    kill -TERM "$host"
    ended_well "in its run"
    tail -n 1 "$home"/journal/*.jsonl | grep -qE '"op":"run.end","exit":(0|75)' || fail "the journal is not complete"
    ;;
  configuration)
    rm "$home/config/siteConfiguration.xml"
    code=0
    "$example/service-host" "$home" OrvaneProcess.Archive 1 2>"$folder/said" || code=$?
    [ "$code" = 78 ] || fail "ended with $code"
    ;;
esac
