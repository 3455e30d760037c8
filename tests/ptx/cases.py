"""The launches of the kernels and their expected results."""

from functools import lru_cache

import numpy as np

from kernels import Case, Expected, Points, Shape
from reference import Piston, evaluate, read_fields

ORDERS = (1, 2, 10, 17, 64)
GRIDS = ((7, 3, 5), (17, 2, 3), (1, 9, 11), (20, 5, 1), (6, 4, 4))  # one for each order

# Elements of turned, sheared and shifted grids, chosen so that the positions are exact; the last
# lines are for doubles, with more digits than floats have.
MAPS = (
    np.array([[12, 20, -31, 4], [-17, 8, 32, 33], [31, 16, 9, -65]]) / 64,
    np.array([[8, -3, 2, -64], [2, 16, 5, -16], [-5, 1, 24, 16]]) / 64,
    np.array([[0, 8, 0, 0], [0, 0, 8, 0], [1, 3, -2, 7]]) / 64,
    np.array([[4, 0, 0, -48], [0, 16, 0, -32], [1, -2, 0, 8]]) / 64,
    np.array([[16, 0, 8, 0], [0, 16, -8, 0], [-3, 5, 2, 0]]) / 64,
)
MORE_DIGITS = np.array([[3, -5, 7, 1], [-11, 2, 9, 5], [8, 3, -13, 7]]) * 2.0**-29

PISTONS = (
    Piston(0.75, 0.5, 12.5), Piston(1.0, 0.25, 3.0), Piston(0.5, 1.5, 40.0),
    Piston(0.25, 1.0, 7.25), Piston(1.25, 0.75, 25.0),
)  # fmt: skip


# Bounds on the errors of the single-precision kernels, in units of 2^-24 (1 + kR). Behind the piston, the
# magnitudes of the edge waves, which determine the rounding errors, add up to more than in front.
IN_FRONT, BEHIND = 1, 3

NAN = Expected(np.array([np.nan]), np.array([0.0]))
ZERO = Expected(np.array([0.0]), np.array([0.0]))
NOTHING = Expected(np.array([]), np.array([]))


def expected_of(field, is_single):
    units = np.where(field.points[:, 2] < 0, BEHIND, IN_FRONT)
    return Expected(field.pressure, field.unit() * units if is_single else field.double_bound())


def grid_indices(size):
    sx, sy, sz = size
    n = np.arange(sx * sy * sz)
    return np.stack([n % sx, n // sx % sy, n // sx // sy], axis=1)


def positions(kind, points):
    """The points, in order, from a kernel's arguments."""
    if kind == "list":
        return np.reshape(points.numbers, (-1, 3))
    index = grid_indices(points.size)
    if kind == "steps":
        return index * np.array(points.numbers)
    if kind == "axes":
        return np.stack([np.array(axis)[n] for axis, n in zip(points.numbers, index.T)], axis=1)
    rows = np.reshape(points.numbers[:12], (3, 4))
    return index @ rows[:, :3].T + rows[:, 3]


def shaped(kind, size, affine):
    """Points of the given kind, close to those of the affine map."""
    if kind == "steps":
        return Points(size, tuple(np.abs(affine[:, :3]).max(axis=1)))
    if kind == "axes":
        return Points(size, tuple(np.arange(n) * step + first for n, step, first in
                                  zip(size, np.abs(affine[:, :3]).max(axis=1), affine[:, 3])))  # fmt: skip
    if kind == "list":
        points = positions("map", Points(size, affine.ravel()))
        return Points((len(points),), points.ravel())
    return Points(size, tuple(affine.ravel()) + ((9.0,) * 4 if kind == "map in memory" else ()))


def at_point(kind, point):
    """The grid whose last point is the given one."""
    if kind == "steps":
        return Points((2, 2, 2), tuple(point))
    if kind == "axes":
        return Points((1, 1, 1), tuple([value] for value in point))
    affine = np.zeros((3, 4))
    affine[:, 3] = point
    return shaped(kind, (1, 1, 1), affine)


class Cases(list):
    """The launches of a kernel, whose arguments give its points in one way."""

    def __init__(self, kind, is_single):
        super().__init__()
        self.kind, self.is_single = kind, is_single

    def add(self, points, piston, order, expected, shape=None):
        self.extend(Case(points, piston, order, is_off, expected, shape) for is_off in (False, True))

    def add_all(self, points, piston, order, shape=None):
        """Adds a launch, with the expected pressure at all points."""
        self.add(points, piston, order, self.expected(positions(self.kind, points), piston, order), shape)

    def add_point(self, point, piston, order):
        """Adds a launch, with the expected pressure at one point."""
        expected = self.expected(np.array([point]), piston, order)
        self.add(at_point(self.kind, point), piston, order, expected)

    def expected(self, points, piston, order):
        if not self.is_single:  # |x| and |y| have single precision
            points = np.concatenate([points[:, :2].astype(np.float32), points[:, 2:]], axis=1)
        axis = float(np.float32(1e-7)) if self.is_single else 1e-7
        return expected_of(evaluate(piston, order, points, axis), self.is_single)


@lru_cache(maxsize=None)
def cases_of(kind, is_single):
    """All launches of a kernel, with every fifth point of tests/data."""
    cases = Cases(kind, is_single)
    for n, order in enumerate(ORDERS):
        affine = MAPS[n] if is_single or kind == "steps" else MAPS[n] + MORE_DIGITS
        cases.add_all(shaped(kind, GRIDS[n], affine), PISTONS[n], order)
        if order in (10, 17, 64):
            add_reference_points(cases, order)
    add_edge_cases(cases)
    return cases


def add_reference_points(cases, order):
    """The points and the pressures of tests/data."""
    for piston, points, pressure in read_fields(order):
        field = evaluate(piston, order, points)
        field.pressure = pressure
        if cases.kind == "list":
            expected = expected_of(field, cases.is_single)
            cases.add(Points((len(points),), points.ravel()), piston, order, expected)
            continue
        for n in range(0, len(points), 5):
            expected = expected_of(field.part(n), cases.is_single)
            cases.add(at_point(cases.kind, points[n]), piston, order, expected)


def add_edge_cases(cases):
    """Rare cases: pistons so small that the distance from an axis matters, phases of many turns, points that
    are not finite, no points, no rule, and grids of blocks of every shape."""
    axis = float(np.float32(1e-7))
    beyond = axis + 2.0**-46
    tiny = Piston(2.0**-21, 2.0**-20, 2.0**20)
    for x, y in ((axis, 2.0**-22), (2.0**-22, axis), (beyond, axis), (axis, beyond)):
        cases.add_point((x, y, 2.0**-19), tiny, 10)
        cases.add_point((x, y, -(2.0**-19)), tiny, 17)
    piston = Piston(0.75, 0.5, 12.5)
    for point in ((0.75, 0.5, 0.25), (-0.75, -0.5, 1.0), (0.75, 0.0, 0.125), (0.0, 0.5, 0.5)):
        cases.add_point(point, piston, 10)
    for order in (10, 17):
        for k in (2.0**17, 2.0**18 + 3, 2.0**23, 2.0**25):
            for point in ((0.5, 0.25, 1.0), (-1.5, 0.25, -2.0), (0.25, 0.75, 1.5), (1.5, 2.0, 0.75)):
                cases.add_point(point, Piston(0.75, 0.5, k), order)
        for point in ((0.5, 0.25, np.inf), (np.nan, 0.25, 1.0), (1.5, np.inf, 1.0), (0.25, 2.0, np.nan)):
            cases.add(at_point(cases.kind, point), piston, order, NAN)

    if cases.is_single:  # so many turns that no digit of the phase is left
        for z in (0.75, -0.75):
            for order in (10, 17):
                cases.add(at_point(cases.kind, (1.5, 2.0, z)), Piston(0.75, 0.5, 2.0**28), order, ZERO)
    point = shaped(cases.kind, (1, 1, 1), MAPS[0])
    cases.add_all(point, piston, 10)
    lists, grids = ((0,), (-1,), (-5,)), ((0, 3, 2), (3, 0, 2), (3, 2, 0), (-3, 2, 1))
    for size in lists if cases.kind == "list" else grids:
        cases.add(Points(size, point.numbers), piston, 10, NOTHING)
    cases.add_all(shaped(cases.kind, (3, 2, 2), MAPS[0]), piston, 0)
    for grid, block in (((2, 2, 3), 16), ((1, 3, 5), 32), ((5, 1, 1), 64), ((1, 1, 7), 96)):
        cases.add_all(shaped(cases.kind, (5, 7, 3), MAPS[1]), piston, 10, Shape(grid, block))
