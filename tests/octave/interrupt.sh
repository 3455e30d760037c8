#!/usr/bin/env bash
# Interrupts a long call in Octave with Ctrl-C, and the next call is right:
#
#   interrupt.sh <octave> <folder of the module> call|array|tolerance|pulse|echo
#
# A call of pistonfield ends there and then, and leaves no thread behind. So does an array at millions of
# points, which shows the time left on a bar: with an order it ends within a second, and with a tolerance within
# a quarter of a second, as do pulses and echoes.
set -euo pipefail
octave=$1 module=$2 what=$3
folder=$(mktemp -d) host=
trap 'if [[ $host ]]; then kill -9 "$host" 2>/dev/null || true; fi; rm -rf "$folder"' EXIT

# The call: five seconds, by what a shorter one takes, for at most 1.5 GB of points. The array: of many
# nodes, for the work to last long on any machine; or with a tolerance that takes double precision.
cat >"$folder/call" <<O
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
if (threads () == threads_before) disp ("NO THREAD IS LEFT"); end
if (whole < 2) disp ("TOO FAST"); end
O
name=pistonarray points=1e6 elements=64 how='4188.79, 512'
case $what in
  tolerance) points=3e6 elements=256 how="4188.79, 'tolerance', 1e-9" ;;
  pulse) name=pistonpulse points=1e4 elements=256 how='1500, pistonburst (1e6, 2, 4e7)' ;;
  echo) name=pistonecho points=1e4 elements=32 how="1500, pistonburst (1e6, 2, 4e7), 'tolerance', 1e-2" ;;
esac
cat >"$folder/array" <<O
function n = threads () n = numel (dir ("/proc/self/task")); end
many = struct ("l", 6e-3, "s", 0.4e-3, "positions", [((1:$elements) - $elements / 2) * 0.75e-3; zeros(2, $elements)]);
function p = long_call (points) p = $name (points, evalin ("base", "many"), $how); end
N = $points;
points = [linspace(-20e-3, 20e-3, N); zeros(1, N); linspace(1e-3, 80e-3, N)];
few = points(:,1:N/10:end);
before = long_call (few); threads_before = threads ();
disp ("NOW"); p = long_call (points);
ended = time ();
f = fopen ("$folder/ended", "w"); fprintf (f, "%.3f", ended); fclose (f);
if (! exist ("p")) disp ("ENDED EARLY"); end
if (threads () == threads_before) disp ("NO THREAD IS LEFT"); end
O
echo 'if (isequal (before, long_call (few))) disp ("THE NEXT CALL IS RIGHT"); end' >"$folder/after"

# A prompt that takes its commands from a file: an interruption ends a command, not the host.
script=$folder/array
if [[ $what == call ]]; then script=$folder/call; fi
cat "$script" "$folder/after" | "$octave" --no-history --norc --quiet --no-line-editing --interactive \
  --path "$module" >"$folder/output" 2>&1 &
host=$!
bar="$name "'\[#+\.+\] +[0-9]+ %, [0-9.]+ (s|min|h) left'
if [[ $what == call ]]; then runs=NOW times=1; else runs=$bar times=2; fi
for ((tries = 0; tries < 1200; ++tries)); do
  if (($(grep -oE "$runs" "$folder/output" | wc -l) >= times)); then break; fi
  kill -0 "$host" 2>/dev/null || break
  sleep 0.05
done
if [[ $what == call ]]; then sleep 1; fi
sent=$(date +%s.%N)
kill -INT "$host" 2>/dev/null || true
wait "$host" || true
cat -v "$folder/output"
if grep -q 'TOO FAST' "$folder/output"; then
  echo "SKIPPED: this machine is too fast for a long call"
  exit 77
fi
grep -q 'ENDED EARLY' "$folder/output"
grep -q 'THE NEXT CALL IS RIGHT' "$folder/output"
grep -q 'NO THREAD IS LEFT' "$folder/output"
if [[ $what != call ]]; then
  grep -qE "$bar" "$folder/output"
  limit=1
  if [[ $what != array ]]; then limit=0.25; fi
  awk -v sent="$sent" -v ended="$(<"$folder/ended")" -v limit="$limit" 'BEGIN {
    printf "ended after %.2f s\n", ended - sent
    exit !(ended - sent < limit)
  }'
fi
