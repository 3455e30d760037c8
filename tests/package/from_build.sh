#!/usr/bin/env bash
# from_build.sh <build folder> <compiler> <argument>...
#
# A compiler launcher for tests that build the library again in another configuration. To save minutes, it
# copies the object files in the build folder, which are position-independent, instead of compiling the same
# sources. One file is compiled nevertheless. For every file, it checks that the headers are found and that
# the options that its results depend on are set.
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
# Make names object files relative to their folder.
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
