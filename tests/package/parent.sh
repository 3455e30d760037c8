#!/usr/bin/env bash
# parent.sh <build folder>
#
# Includes the library in another project, which must get the library and nothing else.
set -euo pipefail
build=$1
folder=$(cd "$(dirname "$0")" && pwd)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake -S "$folder/parent" -B "$work/build" -G Ninja -D PISTONFIELD="$(cd "$folder/../.." && pwd)" \
  -D PISTONFIELD_DEVICE=emulation -D CMAKE_CXX_COMPILER_LAUNCHER="$folder/from_build.sh;$build" >/dev/null
cmake --build "$work/build" >/dev/null
(cd "$work" && build/field >/dev/null && [[ -s field.txt ]])

cmake --install "$work/build" --prefix "$work/prefix" >/dev/null
if [[ -e $work/prefix ]]; then
  echo "the project installs what is not its own:"
  find "$work/prefix" -type f
  exit 1
fi
others=$(cd "$work/build" && find . -path ./CMakeFiles -prune -o -path '*/CMakeFiles/*' -prune -o \
  -type f \( -name '*.mex' -o -name '*.m' -o -name device.txt -o -perm -u+x \) -print | sort)
if [[ $others != "./_deps/pistonfield-build/device.txt
./field" ]]; then
  echo "the project has what is not its own: $others"
  exit 1
fi
