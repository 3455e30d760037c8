#!/usr/bin/env bash
# Prints a table of the registers, stack and spills of every kernel. Fails if a single-precision kernel has a
# stack or spills, or if the one that sums pistons, whose plans are in a stack, spills.
#
#   resources.sh <nvcc> <source folder>
set -euo pipefail
nvcc=$1 sources=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

newest=$("$nvcc" --list-gpu-arch | sed 's/compute_//' | sort -n | tail -n 1)
printf '%-6s %9s %6s %7s  %s\n' arch registers stack spills kernel
failures=0
for source in RectangularPistonCuda RectangularPistonCuda.dp intervals/PistonsOnDevice; do
  for arch in 75 80 90 "$newest"; do
    "$nvcc" -std=c++17 -O3 -I "$sources" -DPISTONFIELD_DOUBLE=1 "-arch=sm_$arch" --resource-usage -cubin \
      -o "$folder/cubin" "$sources/FastNearfield/$source.cu" 2>"$folder/report" >&2
    kernels=0
    while read -r name; read -r stack _ _ _ stores _ _ _ loads _; read -r _ registers _; do
      ((kernels += 1))
      spills=$((stores + loads))
      printf '%-6s %9s %6s %7s  %s\n' "sm_$arch" "$registers" "$stack" "$spills" \
        "$(c++filt "$name" | sed 's/pistonfield:://g')"
      case $source in
        *.dp) ;;
        intervals/*) if ((spills)); then ((failures += 1)); fi ;;
        *) if ((stack + spills)); then ((failures += 1)); fi ;;
      esac
    done < <(sed -nE "s/^.*Compiling entry function '([^']*)'.*/\1/p
                      s/^ *([0-9]+ bytes stack frame.*)/\1/p
                      s/^ptxas info *: *(Used [0-9]+ registers).*/\1/p" "$folder/report")
    if ((kernels == 0)); then
      echo "no kernel was reported for $source on sm_$arch" >&2
      exit 1
    fi
  done
done
((failures == 0)) || { echo "$failures kernels have a stack or spills" >&2; exit 1; }
