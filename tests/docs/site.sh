#!/usr/bin/env bash
# site.sh : checks that the site builds without warnings and can be read offline. Exits with 77 if the tools
# are not installed.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
. scripts/setup
for requirement in "${docs_tools[@]}"; do
  is_there "${requirement%%=*}" || { echo "SKIPPED: there is no ${requirement%%=*}"; exit 77; }
done
scripts/docs || exit 1

status=0
mapfile -t names < <(sed -n '/^__all__ = \[/,/^\]/s/^ *"\(.*\)",$/\1/p' python/pistonfield/__init__.py)
cd build/docs/html || exit 1
# Matches what a page loads from a network: scripts, styles, fonts and pictures, but not the targets of its
# links.
loads='<(script|img|iframe|source)[^>]* src="(https?:)?//|<link [^>]*href="(https?:)?//|url\(["'\'']?((https?:)?/|//)|@import *["'\''](https?:)?/'
if grep -rnEo --include='*.html' --include='*.css' "$loads" .; then
  echo "these are loaded from elsewhere"
  status=1
fi
for page in index docs/index docs/tutorial docs/theory docs/reference/pistonfield docs/reference/python docs/reference/core/Grid.h CHANGELOG; do
  [[ -s $page.html ]] || { echo "there is no $page.html"; status=1; }
done
formulas=$(grep -c '<math ' docs/theory.html)
((formulas > 10)) || { echo "theory.html has $formulas formulas"; status=1; }

python=docs/reference/python.html
((${#names[@]} > 10)) || { echo "__init__.py has ${#names[@]} public names"; status=1; }
for name in "${names[@]}"; do
  grep -q "<dt .* id=\"pistonfield.$name\"" $python || { echo "$python has no $name"; status=1; }
done
grep -q '<span class="gp">&gt;&gt;&gt; ' $python || { echo "the examples of $python are not highlighted"; status=1; }
grep -q '<a [^>]*href="#pistonfield.field"[^>]*><code class="xref' $python || { echo "$python has no links"; status=1; }
if grep -nE 'Union\[|_SupportsArray' $python; then
  echo "these types cannot be read"
  status=1
fi
for page in index tutorial theory; do
  grep -q '<div class="tabs ' docs/$page.html || { echo "$page.html has no tabs"; status=1; }
done
for language in "MATLAB, Octave" Python C++; do
  grep -q "<label for=\"tabs-[^>]*>$language</label>" docs/*.html || { echo "no tab has the name $language"; status=1; }
done
exit "$status"
