"""kernels_test.py NVCC: runs the kernels, compiled by nvcc for the oldest and the newest architecture that it
supports, thread by thread without a GPU.

Every kernel runs with orders 1 to 64 at the points of tests/data and on turned grids: with approximate roots
and reciprocals exact and sums of products rounded twice, and with roots and reciprocals off by as much as PTX
allows and such sums fused by chance. Every instruction runs at least once. Exits with 77 without nvcc or
numpy."""

import sys
import tempfile
import time

from prerequisites import nvcc_or_skip

nvcc = nvcc_or_skip(__doc__)

import numpy as np

from cases import cases_of
from kernels import architectures, compiled_kernels, run


def check(compiled, cases):
    """Runs a kernel and prints its errors; the number of cases that fail."""
    errors, visits = run(compiled, cases, seed=20)
    steps = compiled.kernel.instructions
    idle = [steps[n].text for block, threads in zip(compiled.program.blocks[0], visits) if not threads for n in block]
    wrong = [(case, e) for case, e in zip(cases, errors) if (e > case.expected.bound).any()]

    share = max((e / np.where(case.expected.bound == 0, 1, case.expected.bound)).max(initial=0)
                for case, e in zip(cases, errors))  # fmt: skip
    print(f"{compiled.architecture:<12} {compiled.title():<50} {len(steps):>5} {len(cases):>5} {share:>6.3f}", flush=True)
    for case, e in wrong[:5]:
        print(f"  off by {max(e):.3g}: {case.points.size} points, {case.piston}, order {case.order}")
    if idle:
        print(f"  {len(idle)} instructions were not reached, the first: {idle[0]}")
    return len(wrong) + bool(idle)


def main():
    start = time.monotonic()
    listed = architectures(nvcc)
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        kernels = compiled_kernels(nvcc, [listed[0], listed[-1]], folder)
    print("The share is the largest error over its bound: one unit of 2^-24 (1 + kR) in front of the piston and\n"
          "three behind it for single kernels, what roots, sines and cosines in single precision make of the\n"
          "sums' terms for double ones.\n")  # fmt: skip
    print(f"{'':<12} {'kernel':<50} {'steps':>5} {'cases':>5} {'share':>6}")
    for compiled in kernels:
        cases = cases_of(compiled.kind.points, compiled.real == "f32")
        failures += check(compiled, cases)
    print(f"\n{len(kernels)} kernels in {time.monotonic() - start:.0f} s, {failures} failures")
    return failures > 0


sys.exit(main())
