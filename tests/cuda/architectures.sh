#!/usr/bin/env bash
# architectures.sh <nvcc> <module>
#
# The module carries code for every architecture that the toolkit knows, and PTX for the newest.
set -euo pipefail
nvcc=$1 module=$2

status=0
for code in $("$nvcc" --list-gpu-code); do
  grep -aq "\b$code\b" "$module" || { echo "no code for $code"; status=1; }
done
newest=$("$nvcc" --list-gpu-arch | sort -t_ -k2 -n | tail -n 1)
grep -aq "\b$newest\b" "$module" || { echo "no PTX for $newest"; status=1; }
exit $status
