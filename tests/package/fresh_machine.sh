#!/usr/bin/env bash
# fresh_machine.sh
#
# Installs the Octave package on a bare Debian 12 with only Octave, including the packages that Debian
# recommends with it, which plotting requires. The package itself installs what its build requires.
set -euo pipefail
[[ ${PISTONFIELD_LONG-} ]] || { echo "SKIPPED: takes minutes (PISTONFIELD_LONG=1)"; exit 77; }
cd "$(dirname "$0")/../.."
((EUID == 0)) || { echo "SKIPPED: needs root"; exit 77; }
command -v debootstrap >/dev/null || { echo "SKIPPED: needs debootstrap"; exit 77; }
[[ -e .git ]] || { echo "SKIPPED: packages are made of a commit, and this is no repository"; exit 77; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
scripts/package --into "$work" >/dev/null
tarball=$(basename "$work"/*.tar.gz)
revision=$(tar -xOf "$work/$tarball" --wildcards '*/src/pistonfield/revision' | head -n 1)
scripts/fresh-machine --with "--install-recommends octave" \
  --only "$work/$tarball" --only tests/package/octave.m \
  "! command -v c++ && ! command -v cmake && ! command -v make && ! command -v mkoctfile &&
   octave-cli --no-history --norc --quiet octave.m $tarball '' $revision '' ." 2>&1 | tee "$work/log"
grep -qF "Installing g++ cmake make octave-dev" "$work/log"
