#!/usr/bin/env bash
# Interrupts the computation of an array of 64 elements at a million points in Octave with Ctrl-C. The
# progress bar must show the remaining time, the call must end within a second, and the next call must be
# right.
#
#   interrupt_array.sh <octave> <folder of the module>
set -euo pipefail
octave=$1 module=$2
folder=$(mktemp -d) host=
trap 'if [[ $host ]]; then kill -9 "$host" 2>/dev/null || true; fi; rm -rf "$folder"' EXIT

# Uses a high order, so that the computation takes long on any machine.
cat >"$folder/commands" <<O
addpath ("$module");
many = struct ("l", 6e-3, "s", 0.4e-3, "positions", [((1:64) - 32.5) * 0.75e-3; zeros(2, 64)]);
N = 1e6;
points = [linspace(-20e-3, 20e-3, N); zeros(1, N); linspace(1e-3, 80e-3, N)];
few = points(:,1:1e5:end);
before = pistonarray (few, many, 4188.79, 512);
disp ("NOW"); p = pistonarray (points, many, 4188.79, 512);
ended = time ();
f = fopen ("$folder/ended", "w"); fprintf (f, "%.3f", ended); fclose (f);
if (! exist ("p")) disp ("INTERRUPTED"); end
if (isequal (before, pistonarray (few, many, 4188.79, 512))) disp ("THE NEXT CALL IS RIGHT"); end
O

# An interactive session that reads its commands from a file, so that an interruption ends a command and not
# the host.
"$octave" --no-history --norc --quiet --no-line-editing --interactive <"$folder/commands" \
  >"$folder/output" 2>&1 &
host=$!
bar='pistonarray \[#+\.+\] +[0-9]+ %, [0-9.]+ (s|min|h) left'
for ((tries = 0; tries < 1200; ++tries)); do
  if (($(grep -oE "$bar" "$folder/output" | wc -l) >= 2)); then break; fi
  kill -0 "$host" 2>/dev/null || break
  sleep 0.05
done
sent=$(date +%s.%N)
kill -INT "$host" 2>/dev/null || true
wait "$host" || true
cat -v "$folder/output"

grep -qE "$bar" "$folder/output"
for wanted in 'INTERRUPTED' 'THE NEXT CALL IS RIGHT'; do
  grep -q "$wanted" "$folder/output"
done
awk -v sent="$sent" -v ended="$(<"$folder/ended")" 'BEGIN {
  printf "ended after %.2f s\n", ended - sent
  exit !(ended - sent < 1)
}'
