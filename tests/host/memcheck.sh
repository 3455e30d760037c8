#!/usr/bin/env bash
# memcheck.sh <command>...
#
# Runs a command under valgrind, without AVX-512, which valgrind does not support. Fails if a value is used
# uninitialized, if memory is accessed out of bounds, or if memory leaks.
set -euo pipefail
command -v valgrind >/dev/null || { echo "SKIPPED: valgrind is missing"; exit 77; }
export PISTONFIELD_INSTRUCTION_SET=avx2
exec valgrind --quiet --error-exitcode=9 --leak-check=full --errors-for-leak-kinds=definite \
  --show-leak-kinds=definite "$@"
