#!/usr/bin/env bash
# example.sh <octave-cli> <folder of the modules> <file with %! blocks> [<program to run first>]
#
# Runs a file of %! blocks, which in turn run an example, in an empty folder.
set -euo pipefail
octave=$1 module=$2 blocks=$3
here=$(cd "$(dirname "$0")" && pwd)
examples=$here/../../examples

command -v gnuplot >/dev/null || { echo "SKIPPED: needs gnuplot"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
if [[ ${4-} ]]; then "$4" >/dev/null; fi
"$octave" --no-history --norc --quiet --path "$here:$examples:$examples/cpp" \
  "$here/../octave/run_blocks.m" "$module" "$blocks" device
