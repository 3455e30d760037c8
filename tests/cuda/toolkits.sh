#!/usr/bin/env bash
# Checks that the library, the modules and all tests compile without warnings with an older CUDA toolkit.
#
#   toolkits.sh <version> <Debian suite that has it> <newest g++ it takes> <source folder> <work folder>
#
# Uses the toolkit in /usr/local/cuda-<version> if there is one. Otherwise it unpacks Debian's packages into
# the work folder without installing them, which downloads a gigabyte and keeps 200 MB.
set -euo pipefail
version=$1 suite=$2 newest=$3 sources=$4 work=$5/$1
# shellcheck source=scripts/setup
. "$sources/scripts/setup"

skip() { # <reason>
  echo "SKIPPED: CUDA $version: $1"
  exit 77
}
[[ ${PISTONFIELD_LONG-} ]] || skip "takes minutes and a large download: runs where PISTONFIELD_LONG is set"

fetch() { # <folder>
  local state=$work/apt options
  mkdir -p "$state"/{lists,archives}/partial
  echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] http://deb.debian.org/debian $suite non-free" \
    >"$state/sources.list"
  options=(-q -o "Dir::Etc::sourcelist=$state/sources.list" -o Dir::Etc::sourceparts=/dev/null
    -o "Dir::State::lists=$state/lists" -o "Dir::Cache=$state" -o "APT::Sandbox::User=$(id -un)")
  (cd "$state" && apt-get "${options[@]}" update && apt-get "${options[@]}" download nvidia-cuda-toolkit nvidia-cuda-dev) ||
    return
  mkdir "$1" || return
  { dpkg-deb --fsys-tarfile "$state"/nvidia-cuda-toolkit_*.deb |
    tar -xC "$1" --wildcards './usr/bin/*' './usr/lib/nvidia-cuda-toolkit/*/*' &&
    dpkg-deb --fsys-tarfile "$state"/nvidia-cuda-dev_*.deb |
    tar -xC "$1" --wildcards './usr/include/*' './usr/lib/*/libcuda*rt*' './usr/lib/*/libculibos.a'; } ||
    return
  rm -r "$state"
}

# Arranges the files as in NVIDIA's own packages.
arrange() { # <folder of the unpacked packages> <toolkit>
  local programs=$1/usr/lib/nvidia-cuda-toolkit
  mkdir -p "$2/nvvm/bin"
  mv "$1/usr/bin" "$1/usr/include" "$2"
  mv "$1"/usr/lib/*-linux-gnu "$2/lib64"
  mv -f "$programs"/bin/{nvcc,crt} "$2/bin"
  mv "$programs/bin/cicc" "$2/nvvm/bin"
  mv "$programs/libdevice" "$2/nvvm"
  cat >"$2/bin/nvcc.profile" <<'P'
TOP = $(_HERE_)/..
NVVMIR_LIBRARY_DIR = $(TOP)/nvvm/libdevice
PATH += $(TOP)/nvvm/bin:$(_HERE_):
INCLUDES += "-I$(TOP)/include" $(_SPACE_)
LIBRARIES =+ $(_SPACE_) "-L$(TOP)/lib64"
P
}

toolkit=/usr/local/cuda-$version
if [[ ! -x $toolkit/bin/nvcc ]]; then
  toolkit=$work/toolkit
  if [[ ! -x $toolkit/bin/nvcc ]]; then
    command -v apt-get >/dev/null || skip "there is no /usr/local/cuda-$version, and no apt to fetch it with"
    rm -rf "$work"
    fetch "$work/packages" || skip "Debian's packages of it could not be fetched or unpacked"
    arrange "$work/packages" "$toolkit"
    rm -r "$work/packages"
  fi
fi

compiler=
for ((number = newest; number >= 9; --number)); do
  if command -v "g++-$number" >/dev/null; then compiler=g++-$number; break; fi
done
if [[ ! $compiler ]]; then
  compiler=g++-$newest
  (install_missing "$compiler=$compiler") || skip "takes no g++ newer than $newest, and $compiler cannot be installed"
fi

build=$work/build
rm -rf "$build"
cmake -S "$sources" -B "$build" -G Ninja -DPISTONFIELD_DEVICE=cuda -DPISTONFIELD_BENCHMARKS=ON \
  -DCMAKE_COMPILE_WARNING_AS_ERROR=ON -DCMAKE_CUDA_ARCHITECTURES=75 -DCUDAToolkit_ROOT="$toolkit" \
  -DCMAKE_CUDA_COMPILER="$toolkit/bin/nvcc" -DCMAKE_CUDA_HOST_COMPILER="$compiler" \
  -DCMAKE_CXX_COMPILER="$compiler"
grep -q "CMAKE_CUDA_COMPILER_VERSION \"$version" "$build"/CMakeFiles/*/CMakeCUDACompiler.cmake
nice cmake --build "$build"
rm -rf "$build"
