#!/usr/bin/env bash
# small_stack.sh <command>...
#
# Runs a command with the smallest stack that threads are promised to make do with, 64 kB, by each
# instruction set: of threads that a program starts, too, the limit is the size.
set -euo pipefail
ulimit -s 64
for set in oldest avx2 avx512; do PISTONFIELD_INSTRUCTION_SET=$set "$@"; done
