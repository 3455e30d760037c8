"""pistons_test.py NVCC: runs the kernel that sums pistons for a tolerance, compiled by nvcc for the oldest and
the newest architecture that it supports, thread by thread without a GPU.

The errors against pressures in extended precision are below the tolerance: next to faces, edges and corners,
far away, and for several pistons, with approximate roots and reciprocals exact, and off by as much as PTX
allows. Every instruction runs at least once. Exits with 77 without nvcc or numpy."""

import sys
import tempfile
import time
from pathlib import Path

from prerequisites import nvcc_or_skip

nvcc = nvcc_or_skip(__doc__)

import numpy as np

from kernels import architectures, compile_ptx
from pistons import SOURCE, Compiled, Piston, exact

TOLERANCES = (1e-2, 1e-4, 1e-6, 1e-9)
POSITION_SHARE = 0.25


def points_around(piston, count, chance):
    """In the axes of the piston: on its face and its edges, next to them, around, behind and far."""
    a, b = piston.width / 2, piston.height / 2
    near = lambda: 10 ** chance.uniform(-9, -1) * chance.choice((-1, 1))
    kinds = (
        lambda: (chance.uniform(-a, a), chance.uniform(-b, b), 0),
        lambda: (a, chance.uniform(-b, b), 0),
        lambda: (a, -b, 0),
        lambda: (0, 0, 10 ** chance.uniform(-2, 2)),
        lambda: (0, chance.uniform(-b, b), 10 ** chance.uniform(-2, 1)),
        lambda: (a + near(), chance.uniform(-b, b), abs(near())),
        lambda: (a + near(), b + near(), abs(near())),
        lambda: (a, b, 10 ** chance.uniform(-4, 1)),
        lambda: tuple(chance.uniform(-3, 3, 2) * (a, b)) + (10 ** chance.uniform(-2, 1),),
        lambda: (chance.uniform(-2 * a, 2 * a), chance.uniform(-2 * b, 2 * b), -(10 ** chance.uniform(-2, 1))),
        lambda: tuple(chance.normal(0, 1, 3) * (1, 1, 0) * 1000 + (0, 0, 3000)),
    )  # fmt: skip
    return np.array([kinds[n % len(kinds)]() for n in range(count)])


def turned(x, y):
    """A turn about x and then about y."""
    about_x = [[1, 0, 0], [0, np.cos(x), -np.sin(x)], [0, np.sin(x), np.cos(x)]]
    about_y = [[np.cos(y), 0, np.sin(y)], [0, 1, 0], [-np.sin(y), 0, np.cos(y)]]
    return np.array(about_y) @ np.array(about_x)


def scenes(chance):
    """Pistons, points and exact pressures."""
    for width, height in ((0.9, 16.7), (5, 7.5), (0.2, 0.1), (30, 15), (400, 250)):
        piston = Piston(width, height)
        yield f"{width} by {height}", [piston], points_around(piston, 66, chance)
    for width, height, decay in ((5, 7.5, 0.02), (0.2, 0.1, 0.7), (30, 15, 0.3)):
        piston = Piston(width, height, decay=decay)
        yield f"{width} by {height} with loss", [piston], points_around(piston, 66, chance)
    # Where waves have decayed, also with near points.
    yield "to the side", [Piston(0.5, 0.4, decay=3)], chance.uniform((4, 1, 0), (5, 2, 0.1), (20, 3))
    array = [Piston(0.9, 10, (0.95 * n, 0.1 * n, 0), turned(0.02 * n, 0.05 * n), np.exp(1j * n) / (1 + n))
             for n in range(5)]  # fmt: skip
    yield "5 turned ones", array, chance.uniform((-5, -5, 1), (5, 5, 20), (40, 3))


def check(name, compiled, pistons, points, expected, tolerance, is_off):
    """The largest error over the tolerance; a text if that is too large."""
    peak = float(np.abs(expected).max())
    p, used, visits = compiled.run(pistons, points, tolerance * peak, is_off=is_off, seed=7)
    position_excess = used["position_error"].max() / (POSITION_SHARE * tolerance * peak)
    excess = max(used["excess"].max(), position_excess)
    share = float(np.abs(p - expected).max()) / (tolerance * peak)
    fault = ""
    if not share <= 1:
        fault = f"{name}: {share:.3g} times the tolerance {tolerance:g}"
    if not excess <= 1:
        fault = f"{name}: the tolerance {tolerance:g} is refused, {excess:.3g}"
    if tolerance == 1e-2 and not used["single"].any() or tolerance == 1e-9 and not used["precise"].any():
        fault = f"{name}: another precision than expected"
    return share, fault, visits


def check_launches(compiled, pistons, points):
    """Several launches have the sums of one, bit for bit; a given order is used; a tolerance beyond the
    numbers' range is refused. The faults, and how many threads came to each block."""
    whole, used, visits = compiled.run(pistons, points, 1e-4)
    parts, used_in_parts, more = compiled.run(pistons, points, 1e-4, pieces=3)
    visits, faults = visits + more, []
    if whole.tobytes() != parts.tobytes() or used.tobytes() != used_in_parts.tobytes():
        faults.append("three launches give other sums than one")
    _, used, more = compiled.run(pistons, points, 1e-40)
    visits = visits + more
    if not (used["excess"] > 1).all():
        faults.append("a tolerance that cannot be kept is accepted")
    piston, beside = Piston(5, 7.5), np.array([(2, 1.5, 3), (1, 0.5, 6), (4, 6, 2), (0, 1, 5)])
    far = Piston(4e6, 0.01)  # its edges have more wavelengths than floats have digits of a turn
    for order, bound in ((100, 1e-5), (2, 10)):
        p, used, more = compiled.run([piston], beside, 0, order=order)
        visits = visits + more
        if not (np.abs(p - exact([piston], beside)) < bound).all():
            faults.append(f"the order {order} gives another field")
        if {*used["least"], *used["most"]} != {order} or not used["single"].all():
            faults.append(f"the order {order} is not used")
    _, used, more = compiled.run([far], beside, 0, order=10)
    visits = visits + more
    if not used["precise"].all():
        faults.append("the order 10 is not in double precision where it must be")
    return faults, visits


def idle_steps(compiled, reached):
    """The instructions to which no thread came, except those that refuse a tolerance because more parts of an
    interval are pending than any interval has."""
    refusal = str(int(np.array([1e300]).view(np.uint64)[0]))
    blocks = [[compiled.kernel.instructions[n].text for n in block]
              for block, threads in zip(compiled.program.blocks[0], reached) if not threads]  # fmt: skip
    return [text for block in blocks if not any(refusal in text for text in block) for text in block]


def main():
    start, faults = time.monotonic(), []
    listed = architectures(nvcc)
    chance = np.random.default_rng(5)
    known = [(name, pistons, points, exact(pistons, points)) for name, pistons, points in scenes(chance)]
    print(f"{'largest error over the tolerance':<40}" + "".join(f"{tolerance:>9g}" for tolerance in TOLERANCES))
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / Path(SOURCE).parent).mkdir()
        for architecture in (listed[0], listed[-1]):
            compiled = Compiled(compile_ptx(nvcc, SOURCE, architecture, Path(folder)))
            reached = 0
            for is_off in (False, True):
                shares = []
                for tolerance in TOLERANCES:
                    results = [check(name, compiled, pistons, points, expected, tolerance, is_off)
                               for name, pistons, points, expected in known]  # fmt: skip
                    shares.append(max(share for share, _, _ in results))
                    faults += [fault for _, fault, _ in results if fault]
                    reached = reached + sum(visits for _, _, visits in results)
                title = f"{architecture}, approximations {'off' if is_off else 'exact'}"
                print(f"{title:<40}" + "".join(f"{share:>9.3f}" for share in shares), flush=True)
            more, visits = check_launches(compiled, *known[-1][1:3])
            idle = idle_steps(compiled, reached + visits)
            faults += more + [f"{architecture}: {text} is not reached" for text in idle]
    print("\n".join(faults))
    print(f"{len(compiled.kernel.instructions)} instructions, {time.monotonic() - start:.0f} s, {len(faults)} failures")
    return len(faults) > 0


sys.exit(main())
