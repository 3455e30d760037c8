#!/usr/bin/env bash
# named_tests.sh <page>... : checks that all tests named on the pages exist.
set -euo pipefail
cd "$(dirname "$0")/.."

status=0 names=0
# shellcheck disable=SC2016 # the backquotes are the pages'
while read -r name; do
  ((names += 1))
  # The name of a C++ fixture or of a function of pytest appears in the sources. The name of a ctest test, or at
  # least its last part, appears in a file of CMake.
  where=(--include='*.cpp' --include='*.h')
  if [[ $name == *.* ]]; then where=(--include='*.cmake' --include=CMakeLists.txt); fi
  if [[ $name == test_* ]]; then where=(--include='*.py'); fi
  grep -rqwF -e "$name" -e "${name##*.}" "${where[@]}" . || { echo "no test is called $name"; status=1; }
done < <(grep -ohE '`([A-Z][A-Za-z]*Test|[a-z_]+\.[a-z_]+|test_[a-z_0-9]+)`' "$@" | tr -d '`' | grep -vE '\.(md|cpp|sh)$' | sort -u)
((names > 20)) || { echo "the pages name $names tests only"; status=1; }
exit "$status"
