#!/usr/bin/env bash
# threads.sh <examples/cpp/threads.cpp, compiled>
#
# Compares what the program prints with the integral over the piston, by the midpoint rule on a quarter of it.
set -euo pipefail
"$1" | awk '
  {
    k = 2 * atan2(0, -1) / 1.5e-3; a = 2.5 * 1.5e-3; b = 3.75 * 1.5e-3; n = 150; z = $3 * 1e-3; re = im = 0
    for (i = 0; i < n; ++i)
      for (j = 0; j < n; ++j) {
        R = sqrt(((i + 0.5) * a / n) ^ 2 + ((j + 0.5) * b / n) ^ 2 + z ^ 2)
        re += cos(k * R) / R; im += sin(k * R) / R
      }
    p = 4 * k / (2 * atan2(0, -1)) * a * b / n ^ 2 * sqrt(re ^ 2 + im ^ 2)
    if ($3 != 10 * NR || $7 - p > 5e-4 || p - $7 > 5e-4) { print $0 ": not " p; failed = 1 }
  }
  END { exit failed || NR != 8 }'
