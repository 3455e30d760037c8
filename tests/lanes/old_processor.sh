#!/usr/bin/env bash
# old_processor.sh <processor> <command>...
#
# Runs a command on an emulated x86 processor, which stops it at instructions that the processor
# does not have.
set -euo pipefail
command -v qemu-x86_64-static >/dev/null || { echo "SKIPPED: qemu-x86_64-static is missing"; exit 77; }
exec qemu-x86_64-static -cpu "$@"
