#!/usr/bin/env bash
# clean_shell.sh <script>... : checks that shellcheck reports nothing for the scripts.
set -euo pipefail
command -v shellcheck >/dev/null || { echo "SKIPPED: needs shellcheck"; exit 77; }
shellcheck "$@"
