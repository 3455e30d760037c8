#!/usr/bin/env bash
# full_disk.sh <gauss_legendre>
#
# Checks that the program fails with a message if its output cannot be written.
set -euo pipefail
program=$(realpath "$1")
[[ -e /dev/full ]] || { echo "SKIPPED: there is no /dev/full"; exit 77; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fails() { # <command line>
  local status=0
  bash -c "$1" >out 2>err || status=$?
  if [[ $status != 1 ]] || ! grep -q "could not be written" err; then
    echo "$1: status $status"
    cat err
    exit 1
  fi
}
for part in w x r; do
  ln -sf /dev/full "full_$part.txt"
  fails "'$program' 3 full"
  rm "full_$part.txt"
done
fails "'$program' 3 no/such/folder/rule"
fails "'$program' 3 >/dev/full"
"$program" 3 full >/dev/null
[[ -s full_w.txt && -s full_x.txt && -s full_r.txt ]]
