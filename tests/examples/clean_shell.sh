#!/usr/bin/env bash
# clean_shell.sh <script>... : shellcheck finds nothing in the scripts.
set -euo pipefail
command -v shellcheck >/dev/null || { echo "SKIPPED: needs shellcheck"; exit 77; }
shellcheck "$@"
