#!/usr/bin/env bash
# units.sh STAGE: the units that are installed are units, and keep a job to itself. Exit 77: this machine cannot tell.
set -euo pipefail
stage=$1
if ! command -v systemd-analyze >/dev/null; then
  echo "no systemd-analyze on this machine"
  exit 77
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp "$stage"/lib/systemd/system/* "$folder"
# The program lies in the stage.
sed -i "s,^ExecStart=.*/bin/orvane-host,ExecStart=$stage/bin/orvane-host," "$folder/orvane@.service"
cd "$folder"
for timer in *.timer; do
  unit=$(sed -n 's/^Unit=//p' "$timer")
  cp orvane@.service "$unit"
  "$stage/bin/orvane-host" list | grep -q "OrvaneProcess.${unit:7:-8}\b" || { echo "$timer: no such job: $unit"; exit 1; }
  said=$(systemd-analyze verify --man=no "./$timer" "./$unit" 2>&1) || { echo "$said"; exit 1; }
  [ -z "$said" ] || { echo "$said"; exit 1; }
done
[ "$(find . -name '*.timer' | wc -l)" = "$("$stage/bin/orvane-host" list | grep -c OrvaneProcess)" ] || { echo "a timer for each job"; exit 1; }
systemd-analyze security --no-pager --offline=true --threshold=25 ./orvane@.service | tail -n 1
