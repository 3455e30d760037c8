"""Python computes the bits that C++ computes, and reports what C++ reports."""

from __future__ import annotations

import subprocess
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from numpy.typing import NDArray

import pistonfield as pf

TABLE = Path(__file__).parents[1] / "data" / "fields.txt"


@dataclass
class Case:
    """A field of the table."""

    k: complex = 0
    tolerance: float = 0
    pistons: list[pf.Piston] = field(default_factory=list)
    lens: list[float] = field(default_factory=list)
    medium: list[float] = field(default_factory=list)
    burst: list[float] = field(default_factory=list)
    delays: list[float] = field(default_factory=list)
    receivers: list[pf.Piston] = field(default_factory=list)
    axes: dict[str, list[float]] = field(default_factory=dict)
    points: list[list[float]] = field(default_factory=list)

    def compute(self) -> tuple[NDArray[np.complex128], pf.Used]:
        pistons = pf.lensed(self.pistons, self.lens[0], self.k, self.lens[1]) if self.lens else self.pistons
        if self.points:
            return pf.field(self.points, pistons, self.k, tolerance=self.tolerance, full_output=True)
        x, y, z = (self.axes[name] for name in "xyz")
        return pf.grid(x, y, z, pistons, self.k, tolerance=self.tolerance, full_output=True)

    def compute_pulse(self) -> tuple[NDArray[np.float64], NDArray[np.float64], pf.PulseUsed]:
        sent = self.points, self.pistons, pf.Medium(*self.medium), pf.tone_burst(*self.burst)
        given: dict[str, Any] = {"delays": self.delays, "tolerance": self.tolerance, "full_output": True}
        if self.receivers:
            return pf.echo(*sent, receivers=self.receivers, **given)
        return pf.pulse(*sent, **given)


def piston_of(numbers: list[float]) -> pf.Piston:
    directions = np.reshape(numbers[5:14], (3, 3))
    return pf.Piston(numbers[0], numbers[1], numbers[2:5], directions.T, complex(numbers[14], numbers[15]))


def read_table() -> dict[str, Case]:
    cases: dict[str, Case] = {}
    for line in TABLE.read_text().splitlines():
        word, *rest = line.split() or ["#"]
        if word == "#":
            continue
        if word == "field":
            case = cases[rest[0]] = Case()
            continue
        numbers = [float(number) for number in rest]
        if word == "k":
            case.k = complex(*numbers)
        elif word == "tolerance":
            case.tolerance = numbers[0]
        elif word == "piston":
            case.pistons.append(piston_of(numbers))
        elif word == "receiver":
            case.receivers.append(piston_of(numbers))
        elif word in ("lens", "medium", "burst", "delays"):
            setattr(case, word, numbers)
        elif word == "point":
            case.points.append(numbers)
        else:
            case.axes[word] = numbers
    return cases


CASES = read_table()


def test_the_table_has_grids_and_lists() -> None:
    lists = [name for name, case in CASES.items() if case.points]
    assert len(CASES) >= 20
    assert 5 < len(lists) < len(CASES) - 5


def bits(values: object) -> list[str]:
    return [f"{word:016x}" for word in np.ascontiguousarray(values, np.float64).view(np.uint64)]


@pytest.fixture(scope="session")
def printed(print_fields: Path) -> dict[str, list[str]]:
    """The lines that the C++ program prints for each field, without the heading."""
    output = subprocess.run([print_fields, TABLE], check=True, capture_output=True, text=True).stdout
    sections = [section.splitlines() for section in output.split("field ")[1:]]
    return {heading.split()[0]: lines for heading, *lines in sections}


@pytest.mark.parametrize("name", [name for name, case in CASES.items() if case.burst])
def test_bits_of_pulses_in_cpp(name: str, printed: dict[str, list[str]]) -> None:
    used_in_cpp, *values = printed[name]
    p, t, used = CASES[name].compute_pulse()
    assert values == bits(p.ravel())
    start, rate, bound, nodes = bits([t[0], CASES[name].burst[2], used.bound, used.nodes])
    assert used_in_cpp.split() == ["used", start, rate, str(len(t)), bound, nodes, str(used.frequencies)]


@pytest.mark.parametrize("name", [name for name, case in CASES.items() if not case.burst])
def test_bits_of_cpp(name: str, printed: dict[str, list[str]]) -> None:
    used_in_cpp, *pressures = printed[name]
    p, used = CASES[name].compute()
    assert pressures == [f"{re} {im}" for re, im in zip(bits(p.real.ravel("F")), bits(p.imag.ravel("F")))]
    single, double = used.precision in ("single", "both"), used.precision in ("double", "both")
    assert used_in_cpp.split() == [
        "used",
        *(str(number) for number in (*used.orders, int(single), int(double))),
        *bits([used.nodes, used.bound]),
    ]
