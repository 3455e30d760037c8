#!/usr/bin/env bash
# death_tests.sh <folder of the tests>
#
# Checks that tests that fork are named as death tests. By this name, scripts/gpu-check excludes them from the
# sanitizer, which does not follow forks.
set -euo pipefail
find "$1" -name '*Test.cpp' -exec awk '
  /^TEST/ { name = $0; sub(/,.*/, "", name); sub(/.*\(/, "", name) }
  /(EXPECT|ASSERT)_(EXIT|DEATH)/ {
    ++seen
    if (name !~ /DeathTest$/) { print FILENAME ": " name " forks, and is not called DeathTest"; failed = 1 }
  }
  END { if (!seen) { print "no death test was found"; failed = 1 } exit failed }' {} +
