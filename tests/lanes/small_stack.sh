#!/usr/bin/env bash
# small_stack.sh <command>...
#
# Runs a command with each instruction set and a stack limit of 64 kB, the smallest stack that the library
# supports. The limit also sets the stack size of the threads that a program starts.
set -euo pipefail
ulimit -s 64
for set in oldest avx2 avx512; do PISTONFIELD_INSTRUCTION_SET=$set "$@"; done
