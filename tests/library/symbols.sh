#!/usr/bin/env bash
# symbols.sh STAGE: of the shared library only what the installed headers declare can be seen.
set -euo pipefail
library=$(find "$1/lib" -name 'liborvane.so' | head -n 1)
symbols=$(nm -DC --defined-only "$library" | cut -d' ' -f3-)
for wanted in 'orvane::RunJob(' 'orvane::RegisterSuite(automation::Runtime&, std::filesystem' 'automation::ClassTable::Register' \
  'typeinfo for automation::Error' 'typeinfo for Vantrel::Log'; do
  grep -qF "$wanted" <<<"$symbols" || { echo "Not to be seen: $wanted"; exit 1; }
done
hidden=$(grep -E '(base|effects|orvane_lock|orvane_preflight|suite|OrvaneUtilities|ADODB::(engine|sqlite|odbc)|Scripting::local)::' <<<"$symbols" |
  grep -vE '^(void |bool )?std::|^(typeinfo|vtable)( name)? for std::' || true)
if [ -n "$hidden" ]; then
  echo "Seen and not meant to be:"
  head -n 20 <<<"$hidden"
  exit 1
fi
