"""The prerequisites of the tests of compiled kernels, which are skipped without them."""

import os
import shutil
import sys


def nvcc_or_skip(usage):
    if len(sys.argv) != 2:
        sys.exit(usage)
    if not os.access(sys.argv[1], os.X_OK):
        skip("no CUDA toolkit (nvcc) on this machine")
    numpy_or_skip()
    return sys.argv[1]


def numpy_or_skip():
    try:
        import numpy  # noqa: F401
    except ImportError:
        skip(f"no numpy for {sys.executable}")
    if not shutil.which("c++"):
        skip("no C++ compiler (c++), which the kernels are translated for")


def skip(reason):
    print(f"SKIPPED: {reason}")
    sys.exit(77)
