#!/usr/bin/env bash
# transcript.sh <octave-cli> <folder of the module> <folder of golden texts> <name> <arguments>
#
# Compares what a call in Octave prints, through the host and on the standard output of the process, with the
# golden texts.
set -euo pipefail
octave=$1 module=$2 golden=$3 name=$4 arguments=$5

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$octave" --no-history --norc --quiet --eval "
  addpath ('$module');
  text = evalc ('p = pistonfield ($arguments);');
  file = fopen ('$work/host', 'w');
  fputs (file, text);
  fclose (file);" >"$work/stdout"
diff "$golden/$name.host" "$work/host"
diff "$golden/$name.stdout" "$work/stdout"
