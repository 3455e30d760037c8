#!/usr/bin/env bash
# site.sh : the site builds without a warning, and needs no network to be read. Status 77 where the
# tools are not installed.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
. scripts/setup
for requirement in "${docs_tools[@]}"; do
  is_there "${requirement%%=*}" || { echo "SKIPPED: there is no ${requirement%%=*}"; exit 77; }
done
scripts/docs || exit 1

status=0
cd build/docs/html || exit 1
# What a page loads, that is: scripts, styles, fonts and pictures, and not what it links to.
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
