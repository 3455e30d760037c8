#!/usr/bin/env bash
# shellcheck.sh <script>... : the scripts are clean.
set -euo pipefail
command -v shellcheck >/dev/null || { echo "SKIPPED: needs shellcheck"; exit 77; }
shellcheck "$@"
