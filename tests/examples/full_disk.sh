#!/usr/bin/env bash
# full_disk.sh <octave-cli> <folder of the module> <program field> <folder of the examples>
#
# Checks that an example fails if it cannot write a file. A limit on the file size stands in for a full disk.
set -euo pipefail
octave=$1 module=$2 field=$3 examples=$4
command -v gnuplot >/dev/null || { echo "SKIPPED: needs gnuplot"; exit 77; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fails() { # <kB that a file may have> <command>...
  local said
  if said=$(trap '' XFSZ; ulimit -f "$1"; "${@:2}" 2>&1); then echo "no error: ${*:2}"; exit 1; fi
  [[ $said == *"could not be written"* ]] || { echo "${*:2}: $said"; exit 1; }
}
run=("$octave" --no-history --norc --quiet --path "$module:$examples" --eval)
fails 8 "$field"
fails 2 "${run[@]}" "writevtk ('field.vtk', 'a', 1:10, 1:10, 1:10, 'b', rand (10, 10, 10));"
fails 2 "${run[@]}" "picture = newpicture (600, 400); plot (1:3); savepicture (picture, 'plot.png');"
fails 100 "${run[@]}" "volume"
