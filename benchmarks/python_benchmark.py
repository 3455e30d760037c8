#!/usr/bin/env python3
"""Compares the time of a million points through Python with that through C++, in one run, in turns.

    python_benchmark.py <the program python_benchmark> [seconds]

scripts/test-python builds both. The points, the axes and the tolerance (1e-4) are the same, and so must the last
pressure be. Both sides allocate their result in each turn. The two alternate for a time (20 seconds for the list and
for the grid each), and the fastest turn of each counts, so that a slowdown of the machine affects neither or both.
The ratio of the processor's times, of all cores, is meaningful even while other programs use the cores.
"""

import subprocess
import sys
import tempfile
import time
from pathlib import Path

import numpy as np

import pistonfield as pf

program, duration = Path(sys.argv[1]).resolve(), float(sys.argv[2]) if len(sys.argv) > 2 else 20
points = np.random.default_rng(1).uniform([-10, -10, 0.25], [10, 10, 40], (1_000_000, 3))
axis = np.linspace(0.1, 20, 1000)
piston, k = pf.Piston(5, 7.5), 2 * np.pi
works = {"list": lambda: pf.field(points, piston, k), "grid": lambda: pf.grid(axis, 0, axis, piston, k)}

with tempfile.TemporaryDirectory() as folder:
    for name, values in (("points", points), ("axis", axis)):
        values.tofile(f"{folder}/{name}")
    with subprocess.Popen(
        [program, f"{folder}/points", f"{folder}/axis"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True
    ) as cpp:
        assert cpp.stdin is not None and cpp.stdout is not None
        for name, work in works.items():
            turns: list[tuple[float, float, float, float]] = []
            end = time.perf_counter() + duration
            while (start := time.perf_counter()) < end or not turns:
                processor_start = time.process_time()
                p = work()
                here = (time.perf_counter() - start, time.process_time() - processor_start)
                last = p.ravel("K")[-1]
                del p  # its memory is free in the next turn, as in C++
                print(name, file=cpp.stdin, flush=True)
                seconds, processor, real, imaginary = map(float, cpp.stdout.readline().split())
                turns.append((*here, seconds, processor))
                assert last == complex(real, imaginary)
            python, python_processor, there, cpp_processor = np.min(turns, axis=0)
            print(
                f"{name}: 10^6 points, Python {python * 1e3:.2f} ms, C++ {there * 1e3:.2f} ms, "
                f"Python / C++ {python / there:.3f}; processor time {python_processor / cpp_processor:.3f} "
                f"({len(turns)} turns)"
            )
