#!/usr/bin/env bash
# named_tests.sh <page>... : the tests that the pages name are there.
set -euo pipefail
cd "$(dirname "$0")/.."

status=0 names=0
while read -r name; do
  ((names += 1))
  # A C++ fixture or test stands in the sources as it is; a ctest name may be composed of its last part.
  grep -rqwF -e "$name" -e "${name##*.}" --include='*.cpp' --include='*.h' --include='*.cmake' \
    --include=CMakeLists.txt . || { echo "no test is called $name"; status=1; }
done < <(grep -ohE '`([A-Z][A-Za-z]*Test|[a-z_]+\.[a-z_]+)`' "$@" | tr -d '`' | grep -vE '\.(md|cpp|sh)$' | sort -u)
((names > 20)) || { echo "the pages name $names tests only"; status=1; }
exit "$status"
