#!/usr/bin/env bash
# install.sh CMAKE BUILD STAGE: installs a build into an empty prefix.
set -euo pipefail
rm -rf "$3"
"$1" --install "$2" --prefix "$3" >/dev/null
