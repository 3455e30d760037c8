#!/usr/bin/env bash
# neon.sh <lane_bits of this machine> g++|clang++
#
# Checks that the packs for 64-bit ARM, cross-compiled with the project's options and run by an emulator, give
# the same bits as the scalar code on this machine.
set -euo pipefail
lane_bits=$1
case $2 in
  g++) compiler=(aarch64-linux-gnu-g++) ;;
  clang++) compiler=(clang++ --target=aarch64-linux-gnu) ;; # with g++'s headers and libraries
  *) echo "no compiler $2"; exit 2 ;;
esac
root=$(cd "$(dirname "$0")/../.." && pwd)

for tool in "${compiler[0]}" aarch64-linux-gnu-g++ qemu-aarch64-static; do
  command -v "$tool" >/dev/null || { echo "SKIPPED: $tool is missing"; exit 77; }
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
objects=()
for source in src/FastNearfield/{nodes/Neon,packs/Neon,packs/PackedPressure,GaussLegendre}.cpp \
  src/lanes/InstructionSet.cpp tests/lanes/lane_bits.cpp; do
  mkdir -p "$work/$(dirname "$source")"
  "${compiler[@]}" -std=c++17 -Wall -Wextra -Wconversion -Wshadow -Werror -O3 \
    -ffp-contract=off -fno-math-errno -I "$root/src" -I "$root/tests" \
    -c "$root/$source" -o "$work/$source.o"
  objects+=("$work/$source.o")
done
"${compiler[@]}" -static "${objects[@]}" -o "$work/lane_bits"

"$(dirname "$0")/isolated.sh" "$work"/src/FastNearfield/*/Neon.cpp.o
qemu-aarch64-static "$work/lane_bits" packed >"$work/neon"
"$lane_bits" scalar >"$work/scalar"
lines=$(wc -l <"$work/scalar")
((lines > 1000)) || { echo "only $lines lines to compare"; exit 1; }
diff "$work/scalar" "$work/neon" >"$work/diff" || {
  echo "$(grep -c '^>' "$work/diff") of $lines lines differ; < scalar here, > NEON:"
  head -n 20 "$work/diff"
  exit 1
}
