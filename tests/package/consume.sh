#!/usr/bin/env bash
# consume.sh <build folder> <examples/cpp> <octave-cli or "">
#
# Installs to an empty prefix; builds and runs the example against it; loads the module from it.
set -euo pipefail
build=$1 example=$2 octave=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null

cmake -S "$example" -B "$work/example" -G Ninja -D CMAKE_PREFIX_PATH="$work/prefix" \
  -D CMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$work/example" >/dev/null
(cd "$work" && example/field >/dev/null)
lines=$(wc -l <"$work/field.txt")
((lines == 121 * 201)) || { echo "field.txt has $lines lines"; exit 1; }
if [[ -e /dev/full ]]; then
  mkdir "$work/full"
  ln -s /dev/full "$work/full/field.txt"
  if (cd "$work/full" && ../example/field >/dev/null 2>&1); then
    echo "the example does not notice a full disk"
    exit 1
  fi
fi

"$work/prefix/bin/gauss_legendre" 3 C++ | diff - "$(dirname "$0")/../golden/rules/3.cpp.txt"

if [[ $octave ]]; then
  module=$(dirname "$(find "$work/prefix" -name pistonfield.mex)")
  "$octave" --no-history --norc --quiet --eval "
    addpath ('$module');
    x = (-60:60) * 0.125;
    z = 0.25 + (0:200) * 0.125;
    [X, Z] = ndgrid (x, z);
    p = pistonfield ([X(:)'; zeros(1, numel (X)); Z(:)'], 0, 7.5, 5, 2 * 3.14159265358979, 'cuda', 20);
    q = dlmread ('$work/field.txt') * [1; 1i];
    assert (max (abs (p - q)) < 1e-5);
    assert (max (abs (p)) > 1);" >/dev/null
fi
