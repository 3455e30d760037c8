"""The memory of a call, beside its arguments and its result."""

from __future__ import annotations

import subprocess
import sys

import pytest

POINTS = 2_000_000
RESULT = 16
PROGRAM = """
import re
import numpy as np
import pistonfield as pf

def memory(name):
    with open("/proc/self/status") as file:
        return int(re.search(name + r":\\s*(\\d+) kB", file.read())[1]) * 1024

piston = pf.Piston(5, 7.5)
pf.field(np.random.default_rng(1).random((1000, 3)), piston, 6.28)
points = np.empty(SHAPE, "TYPE", order="ORDER")
for part in np.array_split(points, 100):
    part[...] = np.random.default_rng(2).random(part.shape) * 10
axis = np.linspace(0, 1, 1000)
before = memory("VmRSS")
p = CALL
assert p.size == POINTS
print(memory("VmHWM") - before)
"""

CALLS = {
    "doubles": ("(POINTS, 3)", "f8", "C", "pf.field(points, piston, 6.28)"),
    "in the order of Fortran": ("(POINTS, 3)", "f8", "F", "pf.field(points, piston, 6.28)"),
    "single precision": ("(POINTS, 3)", "f4", "C", "pf.field(points, piston, 6.28)"),
    "single precision, in the order of Fortran": ("(POINTS, 3)", "f4", "F", "pf.field(points, piston, 6.28)"),
    "many axes, in the order of Fortran": ("(1000, POINTS // 1000, 3)", "f4", "F", "pf.field(points, piston, 6.28)"),
    "double precision": ("(POINTS, 3)", "f8", "C", "pf.field(points, piston, 6.28, tolerance=1e-10)"),
    "an order": ("(POINTS, 3)", "f8", "C", "pf.field(points, piston, 6.28, order=10)"),
    "a grid": ("(1, 3)", "f8", "C", "pf.grid(axis, np.linspace(0, 2, POINTS // 1000), 1, piston, 6.28)"),
}


@pytest.mark.parametrize("name", CALLS)
def test_at_most_40_bytes_a_point(name: str) -> None:
    shape, dtype, order, call = CALLS[name]
    program = PROGRAM.replace("CALL", call).replace("SHAPE", shape).replace("TYPE", dtype).replace("ORDER", order)
    program = program.replace("POINTS", str(POINTS))
    output = subprocess.run([sys.executable, "-c", program], check=True, capture_output=True, text=True).stdout
    bytes_a_point = int(output) / POINTS - RESULT
    print(f"{name}: {bytes_a_point:.1f} bytes a point")
    assert -1 < bytes_a_point <= 40
