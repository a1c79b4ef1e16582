#!/usr/bin/env bash
# installed_files.sh STAGE: what is installed beside the documents is what installed_files.txt lists, and every header
# that is installed finds those that it includes.
set -euo pipefail
here=$(dirname "$0")
stage=$1
found=$(cd "$stage" && find . \( -type f -o -type l \) ! -path './share/doc/*' | sed -e 's,^\./,,' -E -e "s,^lib/$(gcc -print-multiarch)/,lib/," -e "s/Targets-[a-z]+\.cmake/Targets-CONFIG.cmake/" | LC_ALL=C sort)
diff "$here/installed_files.txt" - <<<"$found"

cd "$stage/include/orvane"
missing=$(grep -rhoE '^#include "[^"]+"' . | sort -u | sed -E 's/#include "(.*)"/\1/' | while read -r header; do
  [ -f "$header" ] || echo "$header"
done)
if [ -n "$missing" ]; then
  echo "Headers that are included and were not installed:"
  echo "$missing"
  exit 1
fi
