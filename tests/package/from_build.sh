#!/usr/bin/env bash
# from_build.sh <build folder> <compiler> <argument>...
#
# A compiler launcher for tests that build the library anew in another way, of the same sources: takes
# what the build folder has compiled for the emulation device, which is position-independent, in place of
# minutes. One file is compiled all the same; of all the headers must be there, and the options that their
# digits need.
set -euo pipefail
build=$1
shift
preprocess=()
for ((i = 1; i <= $#; ++i)); do
  if [[ ${!i} == -o ]]; then
    ((++i))
    object=${!i}
  else
    preprocess+=("${!i}")
  fi
done
# Make's objects are named from the folder that they lie in.
object=$(realpath -m "${object-}")
compiled=$build/src/${object##*/src/}
if [[ $object == */src/*pistonfield*.dir/* && $object != */matlab/* && $object != */DeviceLock.cpp.o &&
  "$*" == */src/emulation* && -e $compiled ]]; then
  for option in -std=c++17 -ffp-contract=off; do
    if [[ " $* " != *" $option "* ]]; then
      echo "$object is compiled without $option" >&2
      exit 1
    fi
  done
  "${preprocess[@]}" -E >/dev/null
  exec cp "$compiled" "$object"
fi
exec "$@"
