#!/usr/bin/env bash
# versions.sh <module> <newest GLIBC that it may need>
#
# Checks that the module loads on the oldest supported systems: it needs no newer symbols of the C library,
# and none of the C++ library that are newer than those of g++ 12, which hosts include.
set -euo pipefail
module=$1 glibc=$2

needed=$(objdump -T "$module" | grep -oE '\b(GLIBC|GLIBCXX)_[0-9.]+' | sort -Vu)
status=0
for limit in "GLIBC_$glibc" GLIBCXX_3.4.30; do
  newest=$(grep "^${limit%%_*}_" <<<"$needed" | tail -n 1)
  [[ $newest ]] || { echo "$module needs no version of ${limit%%_*}?"; status=1; }
  echo "newest needed: $newest, may be: $limit"
  [[ $(printf '%s\n' "$newest" "$limit" | sort -V | tail -n 1) == "$limit" ]] || status=1
done
exit $status
