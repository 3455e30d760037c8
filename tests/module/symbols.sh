#!/usr/bin/env bash
# symbols.sh <module> <exports.map>
#
# Checks that the module exports every symbol of the map and no others.
set -euo pipefail
module=$1 map=$2

patterns=$(sed -n '/global:/,/local:/s/^ *\([A-Za-z_][A-Za-z_0-9*]*\);$/\1/p' "$map" | sed 's/\*/.*/')
shown=$(nm -D --defined-only "$module" | awk '{ print $NF }')

status=0
[[ $patterns && $shown ]] || { echo "nothing to compare"; status=1; }
if grep -vxE "${patterns//$'\n'/|}" <<<"$shown"; then
  echo "$module shows these beyond $map"
  status=1
fi
for pattern in $patterns; do
  grep -qxE "$pattern" <<<"$shown" || { echo "$module does not show $pattern"; status=1; }
done
exit $status
