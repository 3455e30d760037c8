#!/usr/bin/env bash
# from_build.sh <build folder> <compiler> <argument>...
#
# A compiler launcher for tests that build the library anew in another way, of the same sources: takes
# what the build folder has compiled, which is position-independent, in place of minutes.
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
if [[ ${object-} == *src/*pistonfield*.dir/* && -e $compiled ]]; then
  exec cp "$compiled" "$object"
fi
exec "$@"
