#!/usr/bin/env bash
# isolated.sh <object file>...
#
# Each of the files is compiled for the instruction set that it is named after. What such a file
# defines for other files to see must be tied to its set, by the set's name: of a function that two
# files define the linker keeps one, which could be the one with instructions that a machine lacks.
set -euo pipefail

status=0
(($#)) || { echo "no files"; status=1; }
for object in "$@"; do
  set_name=$(basename "$object")
  set_name=${set_name%%.*}
  symbols=$(nm -C --defined-only --extern-only "$object")
  own="pistonfield::(packed|nodes)$set_name\w*\("
  grep -qE "T $own" <<<"$symbols" || { echo "$object lacks its own function"; status=1; }
  if shared=$(grep -vE "pistonfield::$set_name|$own" <<<"$symbols"); then
    echo "$object shares with other files:"
    echo "$shared"
    status=1
  fi
done
exit $status
