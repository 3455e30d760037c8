#!/usr/bin/env bash
# neon.sh <lane_bits of this machine>
#
# The packs of 64-bit ARM, cross-compiled as the project is and run by an emulator, give the bits of
# the scalar form on this machine.
set -euo pipefail
lane_bits=$1
root=$(cd "$(dirname "$0")/../.." && pwd)

for tool in aarch64-linux-gnu-g++ qemu-aarch64-static; do
  command -v $tool >/dev/null || { echo "SKIPPED: $tool is missing"; exit 77; }
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
compile() { # <source>
  aarch64-linux-gnu-g++ -std=c++17 -Wall -Wextra -Wconversion -Wshadow -Werror -O3 \
    -ffp-contract=off -fno-math-errno -I "$root/src" -I "$root/src/emulation" -I "$root/tests" \
    -c "$1" -o "$work/$(basename "$1").o"
}
compile "$root/src/FastNearfield/packed/Neon.cpp"
for source in src/FastNearfield/{PackedPressure,GaussLegendre}.cpp src/core/InstructionSet.cpp \
  tests/lanes/lane_bits.cpp; do
  compile "$root/$source"
done
aarch64-linux-gnu-g++ -static "$work"/*.o -o "$work/lane_bits"

"$(dirname "$0")/isolated.sh" "$work/Neon.cpp.o"
qemu-aarch64-static "$work/lane_bits" packed >"$work/neon"
"$lane_bits" scalar >"$work/scalar"
lines=$(wc -l <"$work/scalar")
((lines > 1000)) || { echo "only $lines lines to compare"; exit 1; }
diff "$work/scalar" "$work/neon" >"$work/diff" || {
  echo "$(grep -c '^>' "$work/diff") of $lines lines differ; < scalar here, > NEON:"
  head -n 20 "$work/diff"
  exit 1
}
