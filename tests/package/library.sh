#!/usr/bin/env bash
# library.sh <build folder> static|shared <octave-cli or "">
#
# Installs the library, static or shared, and builds programs that find it with pkg-config or CMake. The
# installed module must give the same field.
set -euo pipefail
build=$1 kind=$2 octave=$3
root=$(cd "$(dirname "$0")/../.." && pwd)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if [[ $kind == shared ]]; then
  cmake -S "$root" -B "$work/build" -G Ninja -D BUILD_SHARED_LIBS=ON -D PISTONFIELD_DEVICE=emulation \
    -D CMAKE_CXX_COMPILER_LAUNCHER="$root/tests/package/from_build.sh;$build" >/dev/null
  cmake --build "$work/build" >/dev/null
  build=$work/build
fi
cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmp "$root/COPYING" "$work/prefix/share/doc/pistonfield/COPYING"
"$work/prefix/bin/gauss_legendre" 3 C++ | diff - "$root/tests/golden/rules/3.cpp.txt"
pc=$(find "$work/prefix" -name pistonfield.pc)
lib=$(dirname "$(dirname "$pc")")
export PKG_CONFIG_PATH=${pc%/*}

run_field() { # <program>
  rm -f "$work/field.txt"
  (cd "$work" && "$1") >/dev/null
  awk '{ p = $1 * $1 + $2 * $2; if (p > most) most = p }
       END { exit !(NR == 121 * 201 && most > 1 && most < 16) }' "$work/field.txt" ||
    { echo "$1 has not written the field"; exit 1; }
  local linked=static libraries
  libraries=$(ldd "$1")
  if [[ $libraries == *libpistonfield* ]]; then linked=shared; fi
  [[ $linked == "$kind" ]] || { echo "$1 takes a $linked library"; exit 1; }
}

compile() { # <source> <options of pkg-config>...
  local flags
  read -ra flags < <(pkg-config --cflags --libs "${@:2}" pistonfield)
  c++ -std=c++17 "$1" "${flags[@]}" -Wl,-rpath,"$lib" -o "$work/program"
}
compile "$root/tests/package/version.cpp"
version=$(pkg-config --modversion pistonfield)
[[ $("$work/program") == "$version $version" ]] || { echo "not of version $version"; exit 1; }
compile "$root/examples/cpp/field.cpp"
run_field "$work/program"
compile "$root/examples/cpp/threads.cpp"
"$root/tests/examples/threads.sh" "$work/program"

if [[ $kind == static ]]; then
  [[ " $(pkg-config --static --libs pistonfield) " == *" -pthread "* ]] || { echo "no threads"; exit 1; }
  compile "$root/examples/cpp/field.cpp" --static
  run_field "$work/program"
else
  [[ $(pkg-config --libs pistonfield) != *pthread* ]] || { echo "pkg-config names what is private"; exit 1; }
  name=libpistonfield.so.${version%.*}
  [[ $(readelf -d "$lib/libpistonfield.so") == *"Library soname: [$name]"* ]]
  [[ -e $lib/$name ]]
fi
cmake -S "$root/examples/cpp" -B "$work/example" -G Ninja -D CMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/example" >/dev/null
run_field "$work/example/field"
"$root/tests/examples/threads.sh" "$work/example/threads"

if [[ $octave && $kind == static ]]; then
  module=$(dirname "$(find "$work/prefix" -name pistonfield.mex)")
  "$octave" --no-history --norc --quiet --eval "
    addpath ('$module');
    [X, Z] = ndgrid ((-60:60) * 0.125, 0.25 + (0:200) * 0.125);
    p = pistonfield ([X(:)'; zeros(1, numel (X)); Z(:)'], 0, 7.5, 5, 2 * 3.14159265358979, 'cuda', 20);
    q = dlmread ('$work/field.txt') * [1; 1i];
    assert (max (abs (p - q)) < 1e-5);" >/dev/null
fi
