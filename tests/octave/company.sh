#!/usr/bin/env bash
# company.sh <octave-cli> <folder of the module>
#
# Runs sessions of Octave that make calls and exit: first 20 in sequence (200 with PISTONFIELD_LONG=1), then 4
# at once. All must succeed with the same pressures.
set -euo pipefail
octave=$1 module=$2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
session() { # <name> <calls>
  "$octave" --no-history --norc --quiet --eval "
    addpath ('$module');
    points = [linspace(-0.02, 0.02, 30000); zeros(1, 30000); linspace(0.001, 0.05, 30000)];
    for n = 1:$2
      p = pistonfield (points, 0, 0.01, 0.005, 4188.79);
    endfor
    file = fopen ('$work/$1', 'w');
    fwrite (file, [real(p), imag(p)], 'double');
    fclose (file);" >/dev/null
}

session expected 1
(($(stat -c %s "$work/expected") == 30000 * 16))
for ((n = 0; n < ${PISTONFIELD_LONG:+18}0 + 20; ++n)); do
  session alone 1
  cmp "$work/expected" "$work/alone"
done
workers=()
for ((n = 0; n < 4; ++n)); do
  session "worker$n" 20 &
  workers+=($!)
done
for ((n = 0; n < 4; ++n)); do
  wait "${workers[n]}"
  cmp "$work/expected" "$work/worker$n"
done
