#!/usr/bin/env bash
# neighbour.sh <build folder> <nvcc>
#
# Builds a program that uses both a CUDA runtime and the installed library with the emulation device. With the
# shared and the static runtime, and in either link order, the program's calls must reach the real runtime.
set -euo pipefail
build=$(realpath "$1") nvcc=$2
cd "$(dirname "$0")"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null

if find "$work/prefix" -name 'cuda_runtime*' | grep .; then
  echo "a header of the runtime's name is installed"
  exit 1
fi
library=$(find "$work/prefix" -name libpistonfield.a | grep .)
# With C linkage, the library defines its launchers and no function of the runtime.
if nm --defined-only "$library" | awk 'NF == 3 && $3 ~ /^cuda[A-Z]/' | grep .; then
  echo "the library defines functions of the runtime"
  exit 1
fi

[[ -x $nvcc ]] || { echo "SKIPPED: no CUDA toolkit (nvcc) on this machine"; exit 77; }
cd "$work"
"$nvcc" -std=c++17 -arch="$("$nvcc" --list-gpu-arch | tail -n 1 | sed s/compute/sm/)" \
  -I "$work/prefix/include" -c "$OLDPWD/neighbour.cu" -o neighbour.o
answers=()
for runtime in shared static; do
  "$nvcc" -cudart "$runtime" neighbour.o "$library" -o "last_$runtime"
  "$nvcc" -cudart "$runtime" "$library" neighbour.o "$library" -o "first_$runtime"
  for program in "last_$runtime" "first_$runtime"; do
    LD_LIBRARY_PATH=$(dirname "$nvcc")/../lib64 "./$program" >said || { cat said; exit 1; }
    answers+=("$(tail -n 1 said)")
  done
done
printf '%s\n' "${answers[@]}"
(($(printf '%s\n' "${answers[@]}" | sort -u | wc -l) == 1))
