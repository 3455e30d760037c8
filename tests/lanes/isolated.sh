#!/usr/bin/env bash
# isolated.sh <object file>...
#
# Each of the files is compiled for the instruction set that it is named after. The names of all symbols that
# it shares with other files must include that of its set. If two files define the same function, the linker
# keeps one of them, which could have instructions that a machine lacks.
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
