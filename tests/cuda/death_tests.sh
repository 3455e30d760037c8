#!/usr/bin/env bash
# death_tests.sh <folder of the tests>
#
# Tests that fork are called death tests: by that name scripts/gpu-check keeps them from the sanitizer,
# which does not follow a fork.
set -euo pipefail
find "$1" -name '*Test.cpp' -exec awk '
  /^TEST/ { name = $0; sub(/,.*/, "", name); sub(/.*\(/, "", name) }
  /(EXPECT|ASSERT)_(EXIT|DEATH)/ {
    ++seen
    if (name !~ /DeathTest$/) { print FILENAME ": " name " forks, and is not called DeathTest"; failed = 1 }
  }
  END { if (!seen) { print "no death test was found"; failed = 1 } exit failed }' {} +
