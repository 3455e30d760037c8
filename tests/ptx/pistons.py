"""The kernel that sums pistons for a tolerance (PistonsOnDevice.cu), its launches, and the exact pressures."""

from dataclasses import dataclass, field

import numpy as np

import ptx_text
from launch import Memory, Program, Shape
from reference import PI, Real, in_phase, rule

SOURCE = "intervals/PistonsOnDevice.cu"
PARAMETERS = ["u64", "u64", "u64", "u32", "u64", "u32", "u32", "u64", "u64", "u64"]
MOST_ORDER = 64

# WeightedPiston and UsedAtPoint.
TABLE = np.dtype([("from_start", "u8"), ("w", "u8"), ("least", "i4")], align=True)
WEIGHTED = np.dtype([("centre", "f8", 3), ("axes", "f8", (3, 3)), ("half_width", "f8"), ("half_height", "f8"),
                     ("weight_re", "f8"), ("weight_im", "f8"), ("weight_magnitude", "f8"), ("shift", "f8"),
                     ("relative_shift", "f8"), ("decay", "f8"), ("tolerance", "f8"), ("is_turned", "?"), ("order", "i4"),
                     ("rules", TABLE), ("precise_rules", TABLE)], align=True)  # fmt: skip
USED = np.dtype([("excess", "f8"), ("position_error", "f8"), ("nodes", "i8"), ("least", "i4"), ("most", "i4"),
                 ("single", "i4"), ("precise", "i4")], align=True)  # fmt: skip


@dataclass
class Piston:
    """Lengths are in wavelengths; the columns of `axes` are the directions of its own x, y and z. Waves decay by
    so many nepers a wavelength."""

    width: float
    height: float
    centre: tuple = (0, 0, 0)
    axes: np.ndarray = field(default_factory=lambda: np.eye(3))
    weight: complex = 1
    decay: float = 0


def exact(pistons, points):
    """The sum of the pressures, in extended precision. Each edge is divided at the foot of the perpendicular and
    at 2^-n of each side, down to the distance of the foot, and into parts of up to half a wavelength, each of
    which has a rule of 40 nodes."""
    return sum((piston.weight * exact_of(piston, points) for piston in pistons), np.zeros(len(points), np.clongdouble))


def exact_of(piston, points):
    x, y, z = ((np.asarray(points, Real) - np.asarray(piston.centre, Real)) @ np.asarray(piston.axes, Real)).T
    values = []
    for u, v, w in zip(np.abs(x), np.abs(y), z):
        a, b, height = Real(piston.width) / 2, Real(piston.height) / 2, np.abs(w)
        decay = Real(piston.decay)
        total = sum(edge(d, height, end, decay) for s in (-1, 1)
                    for d, end in ((a + s * u, b - v), (a + s * u, b + v), (b + s * v, a - u), (b + s * v, a + u)))  # fmt: skip
        p = -1j / PI * in_phase(-2 * PI * height) * np.exp(-decay * height) * total
        inside = lambda t, half: Real(t < half) + Real(t == half) / 2
        if w < 0:
            p += 2 * np.sin((2 * PI - 1j * decay) * height) * inside(u, a) * inside(v, b)
        values.append(p)
    return np.array(values)


def edge(d, z, end, decay):
    """d times the integral of -(exp(-i k (R - z)) - 1) / (2 D) from 0 to `end`, which may be negative.
    D = d² + σ², k = 2 π - i decay."""
    if d == 0 or end == 0:
        return 0
    length, nodes, weights = abs(end), *rule(40)
    halvings = int(np.ceil(np.clip(np.log2(length / max(abs(d), z)), 0, 100))) if length > 0 else 0
    cuts = [length * Real(2) ** -n for n in range(halvings + 3)] + [Real(0)]
    total = 0
    for high, low in zip(cuts, cuts[1:]):
        parts = int(np.ceil((high - low) * 2))
        half = (high - low) / parts / 2
        sigma = (low + half * (1 + 2 * np.arange(parts, dtype=Real)))[:, None] + half * nodes
        D = sigma**2 + d**2
        path = D / (np.sqrt(z**2 + D) + z)
        lossless = np.sin(PI * path) * (np.sin(PI * path) + 1j * np.cos(PI * path))
        loss = np.expm1(-decay * path)
        total += (half * weights * (lossless * (1 + loss) - loss / 2) / D).sum()
    return np.sign(end) * d * total


def rule_table(dtype, least, most):
    rules = [rule(order) for order in range(least, most + 1)]
    return [np.concatenate([part.astype(dtype) for part in parts])
            for parts in ([1 + nodes for nodes, _ in rules], [weights for _, weights in rules])]  # fmt: skip


class Compiled:
    def __init__(self, text):
        self.module = ptx_text.read_module(text)
        (self.kernel,) = self.module.kernels
        if [type_name for type_name, _ in self.kernel.parameters] != PARAMETERS or self.module.constants:
            raise ptx_text.UnknownPtx(self.kernel.name)
        self.place_variables(Memory())
        self.program = Program([self.kernel], self.variables)

    def place_variables(self, memory):
        """The kernel's own variables, which come first in every launch's memory and so have one address."""
        self.variables = {name: memory.place(np.frombuffer(content, np.uint8))
                          for name, content in self.module.variables.items()}  # fmt: skip

    def run(self, pistons, points, tolerance, order=0, pieces=1, is_off=False, seed=1):
        """The pressures, what was used, and how many threads came to each block. The pistons are divided
        among `pieces` launches."""
        count, state, visits = len(points), None, 0
        cuts = [n * len(pistons) // pieces for n in range(pieces + 1)]
        for first, last in zip(cuts, cuts[1:]):
            memory = Memory()
            self.place_variables(memory)
            weighted = self.place_pistons(memory, pistons, tolerance, order)
            xyz = [memory.place(np.array(axis, float)) for axis in np.asarray(points).T]
            if state is None:
                outputs = [memory.room(count * size) for size in (8, 8, USED.itemsize)]
            else:
                outputs = [memory.state(array.view(np.uint8)) for array in state]
            visits = visits + self.program.run(Shape((-(-count // 128), 1, 1)),
                                               [*xyz, count, weighted, first, last, *outputs], memory,
                                               points=count, is_off=is_off, seed=seed)  # fmt: skip
            state = [memory.results(address, dtype) for address, dtype in zip(outputs, (np.float64, np.float64, USED))]
        re, im, used = state
        return re + 1j * im, used, visits

    @staticmethod
    def place_pistons(memory, pistons, tolerance, order):
        least, most = (order, order) if order else (1, MOST_ORDER)
        tables = [(*(memory.place(array) for array in rule_table(dtype, least, most)), least)
                  for dtype in (np.float32, np.float64)]  # fmt: skip
        weighted = np.zeros(len(pistons), WEIGHTED)
        for entry, piston in zip(weighted, pistons):
            magnitude = abs(piston.weight)
            for name, value in (("centre", piston.centre), ("axes", np.asarray(piston.axes).T),
                                ("half_width", piston.width / 2), ("half_height", piston.height / 2),
                                ("weight_re", piston.weight.real), ("weight_im", piston.weight.imag),
                                ("weight_magnitude", magnitude), ("relative_shift", 2.0**-50), ("is_turned", True),
                                ("order", order), ("decay", piston.decay),
                                ("tolerance", 0.75 * tolerance / len(pistons) / magnitude),
                                ("rules", tables[0]), ("precise_rules", tables[1])):  # fmt: skip
                entry[name] = value
        return memory.place(weighted)
