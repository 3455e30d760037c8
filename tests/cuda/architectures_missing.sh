#!/usr/bin/env bash
# architectures_missing.sh <nvcc>
#
# Checks that architectures.sh fails if device code or PTX is missing.
set -euo pipefail
nvcc=$1 check=$(realpath "$(dirname "$0")")/architectures.sh
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

code() { "$nvcc" --list-gpu-code | sort -t_ -k2 -n; }
oldest=$(code | head -n 1) newest=$(code | grep '0$' | tail -n 1)
# A toolkit with only two architectures, which compile quickly.
# shellcheck disable=SC2016 # the toolkit's own argument
printf '#!/bin/sh\ncase $1 in --list-gpu-code) echo %s %s ;; *) printf "%%s\\n" %s %s ;; esac\n' \
  "$oldest" "$newest" "${oldest/sm/compute}" "${newest/sm/compute}" >two
chmod +x two

echo '__global__ void kernel(float* x) { *x = 1; }' >kernel.cu
compile() { # <object> <what to generate for the newest>
  "$nvcc" -gencode "arch=${oldest/sm/compute},code=$oldest" \
    -gencode "arch=${newest/sm/compute},code=[$2]" -c -o "$1" kernel.cu
}
compile whole.o "$newest,${newest/sm/compute}"
compile no_ptx.o "$newest"
compile no_newest.o "${newest/sm/compute}"
: >empty.o

"$check" ./two whole.o 1
status=0
refused() { # <object> <reason> [<source files>]
  if "$check" ./two "$1" "${3-1}" >answer || ! grep -q "$2" answer; then
    echo "FAILED: $1 is not refused for $2"
    status=1
  fi
}
refused no_ptx.o "nothing for ${newest/sm/compute}"
refused no_newest.o "nothing for $newest"
refused empty.o "device code of 0 source files"
refused whole.o "device code of 1 source files" 2
exit $status
