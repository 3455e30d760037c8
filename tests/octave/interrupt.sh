#!/usr/bin/env bash
# Interrupts a long call in Octave with Ctrl-C. The call must end promptly and leave no thread behind, and the
# next call must be right.
#
#   interrupt.sh <octave> <folder of the module>
set -euo pipefail
octave=$1 module=$2
folder=$(mktemp -d) host=
trap 'if [[ $host ]]; then kill -9 "$host" 2>/dev/null || true; fi; rm -rf "$folder"' EXIT

# The call takes about five seconds, estimated from a shorter one, and at most 1.5 GB of points.
cat >"$folder/commands" <<O
addpath ("$module");
function n = threads () n = numel (dir ("/proc/self/task")); end
function p = long_call (points) p = pistonfield (points, 0, 0.01, 0.005, 4188.79, "cuda", 512); end
few = [0; 0; 0.01];
before = long_call (few); threads_before = threads ();
million = rand (3, 1e6); tic; long_call (million); second = toc;
millions = min (60, ceil (5 / second)); whole = millions * second;
many = repmat (million, 1, millions);
tic; disp ("NOW"); p = long_call (many);
ended = toc; printf ("ended after %.1f s of some %.1f\n", ended, whole);
if (! exist ("p") && ended < whole / 2) disp ("ENDED EARLY"); end
if (isequal (before, long_call (few))) disp ("THE NEXT CALL IS RIGHT"); end
if (threads () == threads_before) disp ("NO THREAD IS LEFT"); end
if (whole < 2) disp ("TOO FAST"); end
O

# An interactive session that reads its commands from a file, so that an interruption ends a command and not
# the host.
"$octave" --no-history --norc --quiet --no-line-editing --interactive <"$folder/commands" \
  >"$folder/output" 2>&1 &
host=$!
for ((tries = 0; tries < 1200; ++tries)); do
  grep -q NOW "$folder/output" && break
  kill -0 "$host" 2>/dev/null || break
  sleep 0.05
done
sleep 1
kill -INT "$host" 2>/dev/null || true
wait "$host" || true
cat "$folder/output"
if grep -q 'TOO FAST' "$folder/output"; then
  echo "SKIPPED: this machine is too fast for a long call"
  exit 77
fi
for wanted in 'ENDED EARLY' 'THE NEXT CALL IS RIGHT' 'NO THREAD IS LEFT'; do
  grep -q "$wanted" "$folder/output"
done
