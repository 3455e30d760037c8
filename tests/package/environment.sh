#!/usr/bin/env bash
# environment.sh <build folder>
#
# Checks that no installed file reads an environment variable.
set -euo pipefail
build=$1

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null
for part in gauss_legendre '*.a' '*.h'; do
  [[ $(find "$work/prefix" -name "$part") ]] || { echo "there is no $part"; exit 1; }
done
if readers=$(grep -rl getenv "$work/prefix"); then
  echo "these read the environment:"
  echo "$readers"
  exit 1
fi
