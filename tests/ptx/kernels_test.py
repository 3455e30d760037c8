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
    errors, visits, _ = run(compiled, cases, seed=20)
    steps = compiled.kernel.instructions
    idle = [steps[n].text for block, threads in zip(compiled.program.blocks[0], visits) if not threads for n in block]
    wrong = [(case, e) for case, e in zip(cases, errors) if (e > case.expected.bound).any()]

    def largest(counted, where):
        chosen = (counted(case.expected, e)[where(case.expected)] for e, case in zip(errors, cases))
        return max(np.concatenate(list(chosen)))

    in_units = lambda expected, e: e / expected.unit
    of_bound = lambda expected, e: e / np.where(expected.bound == 0, 1, expected.bound)
    in_front = lambda expected: expected.behind == 0
    behind = lambda expected: expected.behind == 1
    print(f"{compiled.architecture:<12} {compiled.title():<50} {len(steps):>5} {len(cases):>5} "
          f"{sum(case.launch_shape().threads() for case in cases):>8} {largest(in_units, in_front):>8.3f} {largest(in_units, behind):>7.3f} "
          f"{max(largest(of_bound, in_front), largest(of_bound, behind)):>6.3f}", flush=True)  # fmt: skip
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
    print("The largest errors, in units of 2^-24 (1 + kR) and as a share of the bound: one such unit in\n"
          "front of the piston and three behind it for single kernels, what roots, sines and cosines in single\n"
          "precision make of the sums' terms for double ones.\n")  # fmt: skip
    print(f"{'':<12} {'kernel':<50} {'steps':>5} {'cases':>5} {'threads':>8} {'in front':>8} {'behind':>7} "
          f"{'share':>6}")  # fmt: skip
    for compiled in kernels:
        cases = cases_of(compiled.kind.points, compiled.real == "f32", every=5)
        failures += check(compiled, cases)
    print(f"\n{len(kernels)} kernels in {time.monotonic() - start:.0f} s, {failures} failures")
    return failures > 0


sys.exit(main())
