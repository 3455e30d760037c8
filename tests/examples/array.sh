#!/usr/bin/env bash
# array.sh <examples/cpp/array.cpp, compiled>
#
# Compares what the program prints with the integral over the elements, by the midpoint rule on half of each.
set -euo pipefail
"$1" | awk '
  {
    pi = atan2(0, -1); k = 2 * pi * 5e6 / 1540; x = $3 * 1e-3; z = 30e-3; nx = 24; ny = 60; re = im = 0
    for (m = 1; m <= 64; ++m) {
      c = -9.6e-3 + (m - 0.5) * 0.3e-3; w = sin(pi * (m - 0.5) / 64) ^ 2
      late = sqrt((5e-3 - c) ^ 2 + z ^ 2)
      for (i = 0; i < nx; ++i)
        for (j = 0; j < ny; ++j) {
          R = sqrt((x - c - 0.27e-3 * ((i + 0.5) / nx - 0.5)) ^ 2 + (2.5e-3 * (j + 0.5) / ny) ^ 2 + z ^ 2)
          re += w * cos(k * (late - R)) / R; im += w * sin(k * (late - R)) / R
        }
    }
    p = 2 * k / (2 * pi) * 0.27e-3 / nx * 2.5e-3 / ny * sqrt(re ^ 2 + im ^ 2)
    if (p > loudest) { loudest = p; where = $3 }
    if ($3 != NR - 1 || $7 - p > 1e-3 || p - $7 > 1e-3) { print $0 ": not " p; failed = 1 }
  }
  END { exit failed || NR != 11 || where != 5 }'
