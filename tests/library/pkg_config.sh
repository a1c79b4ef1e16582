#!/usr/bin/env bash
# pkg_config.sh STAGE SOURCE COMPILER: a program is built by what pkg-config says, against the shared library and against
# the static one.
set -euo pipefail
stage=$1 source=$2 compiler=$3
library=$(dirname "$(find "$stage/lib" -name 'liborvane.so' | head -n 1)")
export PKG_CONFIG_PATH=$library/pkgconfig
# The file was written for the place where a package puts it.
flags() { pkg-config --define-variable=prefix="$stage" "$@" orvane; }
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# shellcheck disable=SC2046 # several words are meant
"$compiler" -std=c++20 $(flags --cflags) "$source" -o "$folder/shared" $(flags --libs)
LD_LIBRARY_PATH=$library "$folder/shared" /nonexistent Archive 2>"$folder/said" && exit 1
grep -q siteConfiguration.xml "$folder/said"
# shellcheck disable=SC2046
"$compiler" -std=c++20 $(flags --cflags) "$source" -o "$folder/static" "$library/liborvane.a" \
  $(flags --libs --static | sed 's/-lorvane\b//')
"$folder/static" /nonexistent Archive 2>"$folder/said" && exit 1
grep -q siteConfiguration.xml "$folder/said"
