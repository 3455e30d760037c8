"""Grids are the fields of their points."""

from __future__ import annotations

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from numpy.typing import ArrayLike

import pistonfield as pf

PISTON = pf.Piston(3, 4, (0.5, -0.25, 0))
K = 2 * np.pi


def points_of(x: ArrayLike, y: ArrayLike, z: ArrayLike) -> np.ndarray:
    return np.stack(np.meshgrid(x, y, z, indexing="ij"), axis=-1)


AXES = st.lists(st.floats(-10, 10, width=32), max_size=5)


@given(AXES, AXES, AXES)
def test_any_axes(x: list[float], y: list[float], z: list[float]) -> None:
    p, used = pf.grid(x, y, z, PISTON, K, tolerance=1e-6, full_output=True)
    assert p.shape == (len(x), len(y), len(z))
    assert p.dtype == np.complex128
    if p.size:
        expected = pf.field(points_of(x, y, z), PISTON, K, tolerance=1e-9)
        assert abs(p - expected).max() <= 1.002e-6 * abs(expected).max()
        assert abs(p - expected).max() <= used.bound + 2e-9 * abs(expected).max()


def test_an_order_is_that_of_every_point() -> None:
    x, y, z = np.linspace(-4, 4, 17), [0, 1], np.linspace(0.5, 8, 9)
    p = pf.grid(x, y, z, PISTON, K, order=12)
    assert np.array_equal(p, pf.field(points_of(x, y, z), PISTON, K, order=12))


def test_the_first_axis_varies_fastest() -> None:
    p = pf.grid([0, 1, 2], [0, 1], [1, 2, 3, 4], PISTON, K)
    assert p.flags.f_contiguous
    assert p.strides == (16, 48, 96)


@pytest.mark.parametrize(("x", "y", "z"), [(0, 0, 1), ([0], 0, np.float32(1)), (np.array(0), np.int8(0), [[1]][0])])
def test_single_values_are_axes_of_length_one(x: ArrayLike, y: ArrayLike, z: ArrayLike) -> None:
    p = pf.grid(x, y, z, PISTON, K)
    assert p.shape == (1, 1, 1)
    assert p[0, 0, 0] == pf.grid([0.0], [0.0], [1.0], PISTON, K)[0, 0, 0]


def test_axes_that_are_not_contiguous() -> None:
    every = np.linspace(0, 5, 21)
    reversed_ = every[::-1]
    read_only = every[::2].astype(">f4")
    read_only.flags.writeable = False
    p = pf.grid(every[::4], reversed_[:3], read_only, PISTON, K)
    expected = pf.grid(every[::4].tolist(), reversed_[:3].tolist(), read_only.tolist(), PISTON, K)
    assert p.tobytes() == expected.tobytes()
