"""The expected results of the kernels: the pressure by the rule of a given order, computed literally in
extended precision, and the values of tests/data, which were computed independently with 30 digits."""

from dataclasses import dataclass
from functools import lru_cache
from pathlib import Path

import numpy as np

Real = np.longdouble
PI = 4 * np.arctan(Real(1))
UNIT = 2.0**-24


@lru_cache(maxsize=None)
def rule(order):
    """Nodes, ascending, and weights of the Gauss-Legendre rule on [-1, 1]: Newton's method on the
    Legendre polynomial, from Chebyshev's nodes."""
    if order == 0:
        return np.zeros(0, Real), np.zeros(0, Real)
    x = -np.cos(np.pi * (np.arange(order) + 0.75) / (order + 0.5)).astype(Real)
    for _ in range(8):
        last, value = np.ones_like(x), x.copy()
        for n in range(2, order + 1):
            last, value = value, ((2 * n - 1) * x * value - (n - 1) * last) / n
        slope = order * (x * value - last) / (x * x - 1)
        x = x - value / slope
    x = (x - x[::-1]) / 2
    return x, 2 / ((1 - x * x) * slope * slope)


@dataclass
class Piston:
    """The half-width along x, the half-height along y and the wave number: a kernel's arguments."""

    a: float
    b: float
    k: float


@dataclass
class Field:
    """A piston, points and the pressures at them. `parts` is the sum of the magnitudes of all terms of the
    quadrature sums, each weighted with the phase error that it may get from the single-precision steps of the
    double-precision kernels, in units of 2^-24."""

    piston: Piston
    order: int
    points: np.ndarray
    pressure: np.ndarray
    parts: np.ndarray

    def part(self, n):
        """The field at point n only."""
        arrays = (array[n : n + 1] for array in (self.points, self.pressure, self.parts))
        return Field(self.piston, self.order, *arrays)

    def farthest_corner(self):
        x, y, z = self.points.T
        return np.sqrt((abs(x) + self.piston.a) ** 2 + (abs(y) + self.piston.b) ** 2 + z**2)

    def unit(self):
        return UNIT * (1 + self.piston.k * self.farthest_corner())

    def double_bound(self):
        """To first order. The rest, and the rounding of doubles, is less than a millionth of it."""
        return UNIT * self.parts * (1 + 1e-6)


def in_phase(theta):
    return np.cos(theta) + 1j * np.sin(theta)


def evaluate(piston, order, points, axis=1e-7):
    """The field at points (n, 3). `axis` is the distance below which a point is on an axis."""
    x, y, z = np.asarray(points, Real).T
    a, b, k = (Real(v) for v in (piston.a, piston.b, piston.k))
    u, v = np.abs(x), np.abs(y)
    nodes, weights = rule(order)
    plane = in_phase(-k * z)

    def integral(d, low, high):
        """∫ (exp(-jkR) - exp(-jkz)) / (d² + σ²) dσ, and the weighted magnitudes of its terms."""
        if len(nodes) == 0:
            return 0 * plane, 0 * z
        centre, half = (high + low) / 2, (high - low) / 2
        sigma = centre[:, None] + half[:, None] * nodes
        D = sigma**2 + d[:, None] ** 2
        R = np.sqrt(z[:, None] ** 2 + D)
        term = half[:, None] * weights / D
        total = ((in_phase(-k * R) - plane[:, None]) * term).sum(axis=1)
        # Rounding the squared distance, its root and the phase gives a phase error of 5/2 units of kR; in the
        # plane wave, only the phase is rounded. The four sines and cosines have errors of up to 2 units.
        error = 2.5 * k * R + abs(k * z)[:, None] + 4 * np.sqrt(2.0)
        empty = low == high
        return np.where(empty, 0, total), np.where(empty, 0, (error * abs(term)).sum(axis=1))

    def edges(d, across, half):
        """The two edges at the distances d[0] and d[1]. Along them, the edges extend from -half to half, and
        the point is at `across`."""
        outside, on_axis = across > half, across <= axis
        near, far = across - half, across + half
        total, parts = 0, 0
        for distance, sign in zip(d, (1, -1)):
            main = integral(distance, np.where(outside, near, 0), far)
            other = integral(distance, near, 0 * near)
            for n, (first, second) in enumerate(zip(main, other)):
                both = np.where(outside, first, np.where(on_axis, 2 * first, first + second))
                if n == 0:
                    total = total + sign * distance * both
                else:
                    parts = parts + abs(distance) * both
        return total, parts

    with np.errstate(all="ignore"):
        along_y = edges((u - a, u + a), v, b)
        along_x = edges((v - b, v + b), u, a)
    S = along_y[0] + along_x[0]
    parts = (along_y[1] + along_x[1]) / (2 * PI)
    return Field(piston, order, np.asarray(points, float), -1j * S / (2 * PI), parts)


DATA = Path(__file__).resolve().parent.parent / "data"


def read_fields(order):
    """tests/data/dev<order>.txt: the fields of its pistons, as (piston, points, pressures)."""
    rows = np.loadtxt(DATA / f"dev{order}.txt", dtype=Real)
    fields = []
    for l, s, k in np.unique(rows[:, :3], axis=0):
        mine = rows[(rows[:, :3] == (l, s, k)).all(axis=1)]
        piston = Piston(float(s) / 2, float(l) / 2, float(k))  # s lies along x
        fields.append((piston, mine[:, 3:6].astype(float), mine[:, 6] + 1j * mine[:, 7]))
    return fields
