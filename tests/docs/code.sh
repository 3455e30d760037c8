#!/usr/bin/env bash
# code.sh <octave> <folder of the modules> <folder to work in> <page>... : runs every block of Octave code in
# the pages unchanged, with build/auto/octave referring to the folder of the modules. The blocks of a page run
# in order in one session. Files that they write are left in a folder with the page's name.
set -euo pipefail
octave=$1 modules=$(realpath "$2") out=$3
shift 3

export LC_ALL=C.UTF-8
status=0 all=0
for page in "$@"; do
  name=$(basename "$page" .md)
  here=$out/$name
  rm -rf "$here"
  mkdir -p "$here/build/auto"
  ln -s "$modules" "$here/build/auto/octave"
  {
    echo 'warning ("off", "Octave:gnuplot-graphics"); graphics_toolkit ("gnuplot");'
    echo 'set (0, "defaultfigurevisible", "off");'
    awk '/^```octave$/ { inside = 1; print "fprintf (\"-- line %d\\n\", " NR ");"; next }
         /^```/ { inside = 0 }
         inside' "$page"
  } >"$here/code.m"
  blocks=$(grep -c '^fprintf ("-- line' "$here/code.m" || true)
  ((all += blocks)) || true
  if ((blocks)) && ! (cd "$here" && "$octave" --no-history --norc --quiet code.m >output.txt 2>&1); then
    echo "$page: the block after the line named last does not run:"
    tail -n 20 "$here/output.txt"
    status=1
  fi
done
echo "$all blocks"
((all > 0)) || { echo "the pages have no code"; status=1; }
exit "$status"
