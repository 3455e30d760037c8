#!/usr/bin/env bash
# pictures.sh <octave> <build folder> : checks that the pictures of the pages are those that scripts/figures
# draws. Exits with 77 if gnuplot or the fonts differ from those that they were drawn with.
set -euo pipefail
octave=$1 build=$2
here=$(cd "$(dirname "$0")" && pwd)
cd "$here/../.."
. scripts/setup

for requirement in "${picture_tools[@]}"; do
  is_there "${requirement%%=*}" || { echo "SKIPPED: there is no ${requirement%%=*}"; exit 77; }
done
[[ $(gnuplot --version) == "gnuplot 5.4 "* ]] || { echo "SKIPPED: $(gnuplot --version) draws otherwise than 5.4"; exit 77; }

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
scripts/figures "$build" "$out"
status=0
for drawing in "$out"/*.svg; do
  cmp "$drawing" "docs/$(basename "$drawing")" || status=1
done
"$octave" --no-history --norc --quiet --path "$here" --eval "same_pictures ('docs', '$out')" || status=1
((status == 0)) || echo "scripts/figures draws them anew."
exit "$status"
