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
cd build/docs/html || exit 1
# Matches what a page loads from a network: scripts, styles, fonts and pictures, but not the targets of its
# links.
loads='<(script|img|iframe|source)[^>]* src="(https?:)?//|<link [^>]*href="(https?:)?//|url\(["'\'']?((https?:)?/|//)|@import *["'\''](https?:)?/'
if grep -rnEo --include='*.html' --include='*.css' "$loads" .; then
  echo "these are loaded from elsewhere"
  status=1
fi
for page in index docs/index docs/tutorial docs/theory docs/reference/pistonfield docs/reference/core/Grid.h CHANGELOG; do
  [[ -s $page.html ]] || { echo "there is no $page.html"; status=1; }
done
formulas=$(grep -c '<math ' docs/theory.html)
((formulas > 10)) || { echo "theory.html has $formulas formulas"; status=1; }
exit "$status"
