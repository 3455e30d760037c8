#!/usr/bin/env bash
# folder_names.sh <sources> <cmake>
#
# Checks that the sources build in folders with unusual names, such as that of a second download. With Make
# and with Ninja, it configures the build and makes the version header and the first library.
set -euo pipefail
sources=$1 cmake=$2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
folder="$work/it's, a (1) & \$b"
mkdir "$folder"
cp -r "$sources"/{CMakeLists.txt,COPYING,cmake,src} "$folder"
for generator in "Unix Makefiles" Ninja; do
  build=$folder/build/$generator
  if ! "$cmake" -S "$folder" -B "$build" -G "$generator" -D PISTONFIELD_DEVICE=emulation \
    -D BUILD_TESTING=OFF >"$work/log" 2>&1 ||
    ! "$cmake" --build "$build" --target pistonfield_version_header pistonfield_parallel >>"$work/log" 2>&1; then
    echo "$generator:"
    tail -n 20 "$work/log"
    exit 1
  fi
  grep -q PISTONFIELD_COMMIT "$build/generated/version.h"
done
