#!/usr/bin/env bash
# thread_local.sh <module>
#
# Checks that the module has no thread-local data. The dynamic linker allocates a thread's copy at its first
# use, and ends the process if there is too little memory.
set -euo pipefail
segments=$(readelf -lW "$1")
[[ $segments == *LOAD* ]] || { echo "no program headers in $1"; exit 1; }
if grep -w TLS <<<"$segments"; then
  echo "$1 has thread-local data:"
  readelf -sW "$1" | grep -w TLS
  exit 1
fi
