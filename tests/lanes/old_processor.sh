#!/usr/bin/env bash
# old_processor.sh <processor> <command>...
#
# Runs a command on an emulated x86 processor. Instructions that the processor lacks end the command.
set -euo pipefail
command -v qemu-x86_64-static >/dev/null || { echo "SKIPPED: qemu-x86_64-static is missing"; exit 77; }
exec qemu-x86_64-static -cpu "$@"
