#!/usr/bin/env bash
# from_build.sh <build folder> <compiler> <argument>...
#
# A compiler launcher for tests that build the library anew in another way, of the same sources: takes
# what the build folder has compiled, which is position-independent, in place of minutes. One file is
# compiled all the same, and all must be asked for with the options that their digits need.
set -euo pipefail
build=$1
shift
for ((i = 1; i < $#; ++i)); do
  if [[ ${!i} == -o ]]; then
    ((++i))
    object=${!i}
  fi
done
compiled=$build/src/${object#*src/}
if [[ ${object-} == *src/*pistonfield*.dir/* && -e $compiled && $object != */DeviceLock.cpp.o ]]; then
  for option in -std=c++17 -ffp-contract=off; do
    if [[ " $* " != *" $option "* ]]; then
      echo "$object is compiled without $option" >&2
      exit 1
    fi
  done
  exec cp "$compiled" "$object"
fi
exec "$@"
