#!/usr/bin/env bash
# octave.sh <octave-cli> <folder of the modules>
#
# Makes the Octave package twice, with identical results, then installs, uses and uninstalls it in an empty
# home folder.
set -euo pipefail
octave=$1 modules=$2
cd "$(dirname "$0")/../.."
[[ -e .git ]] || { echo "SKIPPED: packages are made of a commit, and this is no repository"; exit 77; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work"/{home,prefix,pictures,once,again}
scripts/package --into "$work/once" >/dev/null
scripts/package --into "$work/again" >/dev/null
tarball=$(echo "$work"/once/*.tar.gz)
cmp "$tarball" "$work/again/${tarball##*/}"

revision=$(tar -xOf "$tarball" --wildcards '*/src/pistonfield/revision' | head -n 1)
commit=$(git log -1 --format=%h)
[[ $revision == "$commit"* ]] || { echo "the package is of $revision, not of $commit"; exit 1; }
CMAKE_CXX_COMPILER_LAUNCHER="$PWD/tests/package/from_build.sh;$(dirname "$modules")" \
  HOME=$work/home XDG_DATA_HOME='' "$octave" --no-history --norc --quiet tests/package/octave.m \
  "$tarball" "$work/prefix" "$revision" "$modules" "$work/pictures" >"$work/log" 2>&1 ||
  { tail -n 40 "$work/log"; exit 1; }

# If nothing may be installed, the error names what is missing.
mkdir "$work/bin"
ln -s "$(command -v bash)" "$work/bin"
tar -xf "$tarball" -C "$work"
if "$octave" --no-history --norc --quiet --eval "
    cd ('$work/$(basename "$tarball" .tar.gz)');
    setenv ('PATH', '$work/bin');
    pre_install (struct ('name', 'pistonfield', 'version', '1'));" >"$work/log" 2>&1 ||
  ! grep -qF "error: pistonfield 1 could not be installed" "$work/log" ||
  ! grep -qF "apt-get install g++ cmake make octave-dev" "$work/log"; then
  echo "not said, what is missing:"
  cat "$work/log"
  exit 1
fi
