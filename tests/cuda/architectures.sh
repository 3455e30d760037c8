#!/usr/bin/env bash
# architectures.sh <nvcc> <module> <minimum number of source files with device code>
#
# Checks that every source file of the module's device code is compiled for every architecture that the
# toolkit supports, and includes PTX for the newest major one, which drivers can compile for later
# architectures.
set -euo pipefail
nvcc=$1 module=$2 least=$3

newest=$("$nvcc" --list-gpu-arch | grep '0$' | sort -t_ -k2 -n | tail -n 1)
all=$(python3 "$(dirname "$0")/fatbins.py" "$module")
status=0 sources=0
while read -r -a compiled; do
  ((${#compiled[@]})) || continue
  ((sources += 1))
  for code in $("$nvcc" --list-gpu-code) "$newest"; do
    if [[ " ${compiled[*]} " != *" $code "* ]]; then
      echo "source $sources of the device code: nothing for $code"
      status=1
    fi
  done
done <<<"$all"
((sources >= least)) || { echo "device code of $sources source files"; status=1; }
exit $status
