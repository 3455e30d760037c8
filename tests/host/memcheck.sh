#!/usr/bin/env bash
# memcheck.sh <command>...
#
# Runs a command under valgrind, which knows no AVX-512: no value is used before it is written, no
# memory beyond its end, and none is lost.
set -euo pipefail
command -v valgrind >/dev/null || { echo "SKIPPED: valgrind is missing"; exit 77; }
export PISTONFIELD_INSTRUCTION_SET=avx2
exec valgrind --quiet --error-exitcode=9 --leak-check=full --errors-for-leak-kinds=definite \
  --show-leak-kinds=definite "$@"
