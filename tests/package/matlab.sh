#!/usr/bin/env bash
# matlab.sh <octave-cli> <build folder>
#
# Tests setup of the archive for MATLAB, run by Octave: with several modules to choose from, with none, and
# where none can be built. The name of the folder has characters that are special to a shell.
set -euo pipefail
octave=$1 build=$2
cd "$(dirname "$0")/../.."
[[ -e .git ]] || { echo "SKIPPED: archives are made of a commit, and this is no repository"; exit 77; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
scripts/package --into "$work" "$build" >/dev/null
scripts/package --into "$work/again" "$build" >/dev/null
archive=$(echo "$work"/*-matlab.zip)
cmp "$archive" "$work/again/${archive##*/}"
place="$work/it's, (1) & \`touch ran\`"
mkdir "$place"
(cd "$place" && cmake -E tar xf "$archive")
folder=$place/$(basename "$archive" -matlab.zip)
version=${folder##*-}

export CMAKE_CXX_COMPILER_LAUNCHER="$PWD/tests/package/from_build.sh;$build"
run() { "$octave" --no-history --norc --quiet "$@" >"$work/said" 2>&1; }
setup_takes() { # <folder of the module>
  run tests/package/matlab.m "$folder" "$build/octave" "$1" || { cat "$work/said"; exit 1; }
}
says() { grep -qF -- "$1" "$work/said" || { echo "not said: $1"; cat "$work/said"; exit 1; }; }
setup_fails() { # <text> [<variable> <value>]
  if run --eval "setenv ('${2-NONE}', '${3-}'); cd ('${folder//\'/\'\'}'); setup"; then
    echo "setup did not fail: $1"
    exit 1
  fi
  says "error: $1"
}

# Contents.m has the version, and each function once with the first line of its help.
contents=$(<"$folder/Contents.m")
[[ $contents =~ ^'% pistonfield'$'\n''% Version '$version' '[0-3][0-9]-[A-Z][a-z][a-z]-20[0-9][0-9]$'\n' ]] ||
  { echo "not a version: $contents"; exit 1; }
functions=("$folder"/p*.m "$folder"/modules/emulation/*.m "$folder/setup.m")
((${#functions[@]} == $(grep -c '^%   .* - ' <<<"$contents"))) || { echo "not each once: $contents"; exit 1; }
for file in "${functions[@]}"; do
  name=$(basename "$file" .m)
  line=$(head -n 1 "$file")
  grep -qE "^%   $name +- ${line#*  }\$" <<<"$contents" || { echo "not of $name: $contents"; exit 1; }
done

# setup is written in the language common to both hosts.
run tests/octave/run_blocks.m "$folder" tests/octave/dialect.tst nothing || { cat "$work/said"; exit 1; }

# setup chooses the included module if the other one finds no GPU or is not a module, and the one for a GPU if
# it works.
setup_takes modules/emulation
mkdir "$folder/modules/cuda"
cp "$folder"/modules/emulation/*.m "$folder/modules/cuda"
cat >"$work/no_gpu.c" <<'END'
#include <mex.h>
void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]) {
  mexErrMsgTxt("no CUDA-capable device is detected");
}
END
for module in pistonfield pistonfield_quiet pistonfield_about pistonfield_pressure; do
  mkoctfile --mex -o "$work/no_gpu.mex" "$work/no_gpu.c"
  cp "$work/no_gpu.mex" "$folder/modules/cuda/$module.mex"
done
setup_takes modules/emulation
says "no CUDA-capable device is detected"
for module in "$folder"/modules/cuda/*.mex; do echo "no module" >"$module"; done
setup_takes modules/emulation
says "Not usable here: $folder/modules/cuda"
cp "$folder"/modules/emulation/*.mex "$folder/modules/cuda"
setup_takes modules/cuda

# Without modules, setup fails if something that the build requires is missing, and otherwise builds one.
rm -r "$folder/modules"
setup_fails "CMake was not found" PATH /nowhere
setup_fails "No C++ compiler was found" CXX /nowhere/c++
mv "$folder/source/src" "$folder/source/away"
setup_fails "The module could not be built"
mv "$folder/source/away" "$folder/source/src"
setup_takes build/octave
says "Building one"
setup_takes build/octave
if grep -qF "Building one" "$work/said"; then echo "built twice"; exit 1; fi
[[ ! -e ran && ! -e $folder/ran ]] || { echo "a shell ran the name of the folder"; exit 1; }
