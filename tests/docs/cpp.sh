#!/usr/bin/env bash
# cpp.sh <compiler> <folder of the headers> <page>... : checks that every block of C++ code in the pages
# compiles unchanged, as a file of its own.
set -euo pipefail
compiler=$1 headers=$2
shift 2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0 all=0
for page in "$@"; do
  awk -v file="$work/$(basename "$page" .md)" '/^```cpp$/ { inside = 1; name = file "." NR + 1 ".cpp"; next }
    /^```/ { inside = 0 }
    inside { print >name }' "$page"
done
for block in "$work"/*.cpp; do
  ((all += 1))
  "$compiler" -std=c++17 -Wall -Wextra -Werror -fsyntax-only -I "$headers" "$block" || status=1
done
echo "$all blocks"
exit "$status"
