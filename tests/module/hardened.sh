#!/usr/bin/env bash
# hardened.sh <module or program>...
#
# Checks that each is position-independent, that its relocations are resolved and read-only before its code
# runs, that its stack is protected and not executable, and that it has no search path for libraries.
set -euo pipefail

status=0
complain() {
  echo "$*"
  status=1
}

(($#)) || complain "no files"
for file in "$@"; do
  header=$(readelf -hW "$file")
  segments=$(readelf -lW "$file")
  dynamic=$(readelf -dW "$file")
  undefined=$(nm -D --undefined-only "$file")
  grep -qE 'Type: +DYN' <<<"$header" || complain "$file: not position-independent"
  grep -q 'GNU_RELRO' <<<"$segments" || complain "$file: relocations stay writable"
  grep -qE '\((BIND_NOW|FLAGS)\).*BIND_NOW|\(FLAGS_1\).*NOW' <<<"$dynamic" ||
    complain "$file: functions are bound as they are called"
  grep -qE 'GNU_STACK .* RW ' <<<"$segments" || complain "$file: the stack can be run"
  ! grep TEXTREL <<<"$dynamic" || complain "$file: its code is written to when loaded"
  ! grep -E '\((RPATH|RUNPATH)\)' <<<"$dynamic" || complain "$file: looks for libraries there"
  grep -q '__stack_chk_fail' <<<"$undefined" ||
    complain "$file: no function checks its stack"
done
exit $status
