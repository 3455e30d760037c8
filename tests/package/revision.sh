#!/usr/bin/env bash
# revision.sh <sources> <cmake>
#
# Checks the revision of a build: that of an archive, that of the sources' own repository, or the version.
set -euo pipefail
sources=$1 cmake=$2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export GIT_CONFIG_GLOBAL=/dev/null GIT_CONFIG_SYSTEM=/dev/null
commit() { # <repository>
  git init -q "$1"
  git -C "$1" -c user.name=somebody -c user.email=somebody@localhost commit -q --allow-empty -m "Start"
}
expect() { # <revision> <its date>
  "$cmake" -D SOURCE="$work/theirs/ours" -D OUTPUT="$work/version.h" -D VERSION=1.2.3 \
    -P "$sources/cmake/WriteVersion.cmake"
  if ! grep -qxF "#define PISTONFIELD_COMMIT \"$1\"" "$work/version.h" ||
    ! grep -qxF "#define PISTONFIELD_DATE \"\$Date: $2 \$\"" "$work/version.h"; then
    echo "not of $1, $2:"
    cat "$work/version.h"
    exit 1
  fi
}

mkdir -p "$work/theirs/ours/src/matlab"
cp "$sources/src/matlab/version.h.in" "$work/theirs/ours/src/matlab"
commit "$work/theirs"
expect 1.2.3 unknown
commit "$work/theirs/ours"
expect "$(git -C "$work/theirs/ours" log -1 --format=%h)" \
  "$(git -C "$work/theirs/ours" log -1 --format=%cd --date=format:'%Y/%m/%d %H:%M:%S')"
printf 'abc1234\n2001/02/03 04:05:06\n' >"$work/theirs/ours/revision"
expect abc1234 "2001/02/03 04:05:06"
