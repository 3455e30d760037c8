#!/usr/bin/env bash
# versions.sh <module> <newest GLIBC that it may need>
#
# The module loads on systems as old as promised: it needs no newer symbols of the C library, and
# none of the C++ library's that are newer than g++ 12's, which hosts bring along.
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
