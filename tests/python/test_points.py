"""Points of every shape, type and layout: the pressures are those of the same points as plain doubles."""

from __future__ import annotations

import tracemalloc
from typing import Any

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from hypothesis.extra import numpy as arrays
from numpy.typing import NDArray

import pistonfield as pf

PISTONS = [pf.Piston(5, 7.5), pf.Piston(1, 2, (3, 0, -1), weight=0.5j)]
K = 2 * np.pi

SAFE = ["?", "b", "B", "h", "H", "i", "I", "l", "L", "q", "Q", "e", "f", "d", ">f4", ">f8", ">i2"]
REFUSED = ["g", "F", "D", "G", "O", "S4", "U4", "V8", "M8[s]", "m8[s]"]

# Each lays the values out differently.
LAYOUTS = {
    "as it is": lambda a: a,
    "reversed": lambda a: a[::-1, :, ::-1].copy()[::-1, :, ::-1],
    "transposed": lambda a: a.transpose().copy().transpose(),
    "in the order of Fortran": np.asfortranarray,
    "every second": lambda a: np.repeat(np.repeat(a, 2, axis=0), 2, axis=2)[::2, :, ::2],
    "unaligned": lambda a: unaligned(a),
    "a view of a column": lambda a: np.stack([a, a], axis=-1)[..., 0],
}


def unaligned(array: NDArray[Any]) -> NDArray[Any]:
    buffer = bytearray(array.nbytes + 1)
    shifted = np.frombuffer(buffer, array.dtype, array.size, offset=1).reshape(array.shape)
    shifted[...] = array
    return shifted


def values_of(dtype: np.dtype[Any]) -> st.SearchStrategy[Any]:
    if dtype.kind == "b":
        return st.booleans()
    if dtype.kind == "f":
        return st.floats(-100, 100, width=16)
    return st.integers(max(-100, int(np.iinfo(dtype).min)), 100)


@st.composite
def point_arrays(draw: st.DrawFn) -> tuple[NDArray[Any], str]:
    dtype = np.dtype(draw(st.sampled_from(SAFE)))
    shape = (draw(st.integers(0, 4)), draw(st.integers(0, 3)), 3)
    array = draw(arrays.arrays(dtype, shape, elements=values_of(dtype)))
    return array, draw(st.sampled_from(sorted(LAYOUTS)))


def bits(p: NDArray[np.complex128]) -> bytes:
    return np.ascontiguousarray(p).tobytes()


@given(point_arrays(), st.booleans())
def test_any_type_and_layout(drawn: tuple[NDArray[Any], str], writable: bool) -> None:
    array, layout = drawn
    points = LAYOUTS[layout](array)
    points.flags.writeable = writable and points.flags.writeable
    before = (points.tobytes(), points.dtype, points.shape, points.strides)
    p = pf.field(points, PISTONS, K)
    assert before == (points.tobytes(), points.dtype, points.shape, points.strides)
    assert p.dtype == np.complex128
    assert p.shape == array.shape[:-1]
    plain = np.array(array.tolist(), np.float64).reshape(-1, 3)
    assert bits(p) == bits(pf.field(plain, PISTONS, K).reshape(p.shape))


@given(st.lists(st.integers(0, 3), max_size=4), st.integers(0, 2**32 - 1))
def test_any_shape(leading: list[int], seed: int) -> None:
    points = np.random.default_rng(seed).uniform(-10, 10, (*leading, 3))
    p = pf.field(points, PISTONS, K)
    assert p.shape == tuple(leading)
    assert bits(p.ravel()) == bits(pf.field(points.reshape(-1, 3), PISTONS, K))


@pytest.mark.parametrize("dtype", SAFE)
def test_real_types(dtype: str) -> None:
    points = np.array([[0, 0, 1], [1, 0, 1]], dtype)
    assert bits(pf.field(points, PISTONS, K)) == bits(pf.field([[0.0, 0, 1], [1, 0, 1]], PISTONS, K))
    p = pf.grid(points[0], points[1], np.array([1, 1], dtype), PISTONS, K)
    assert bits(p) == bits(pf.grid([0.0, 0, 1], [1.0, 0, 1], [1.0, 1], PISTONS, K))


@pytest.mark.parametrize("dtype", REFUSED)
def test_other_types_are_refused(dtype: str) -> None:
    points = np.zeros((2, 3), dtype)
    with pytest.raises(ValueError, match=r"^points must be real numbers that fit float64"):
        pf.field(points, PISTONS, K)
    for name in "xyz":
        with pytest.raises(ValueError, match=rf"^{name} must be real numbers that fit float64"):
            pf.grid(**({"x": 0, "y": 0, "z": 1} | {name: points[0]}), pistons=PISTONS, k=K)


@pytest.mark.parametrize("layout", sorted(LAYOUTS))
def test_layouts_of_doubles(layout: str) -> None:
    points = np.random.default_rng(1).uniform(-10, 10, (20, 5, 3))
    assert bits(pf.field(LAYOUTS[layout](points), PISTONS, K)) == bits(pf.field(points, PISTONS, K))
    axis = LAYOUTS[layout](points[..., :1])[:, 0, 0]
    assert bits(pf.grid(axis, axis, axis, PISTONS, K)) == bits(pf.grid(*[points[:, 0, 0]] * 3, PISTONS, K))


def test_a_list_and_a_single_point() -> None:
    assert pf.field((0, 0, 1), PISTONS, K).shape == ()
    assert bits(pf.field([[0, 0, 1]], PISTONS, K)) == bits(pf.field((0, 0, 1), PISTONS, K))


@given(st.integers(0, 9), st.integers(0, 2), st.sampled_from([np.nan, np.inf, -np.inf]))
def test_a_point_that_is_not_finite_spoils_only_itself(row: int, column: int, value: float) -> None:
    points = np.random.default_rng(row).uniform(-10, 10, (10, 3))
    others = np.arange(10) != row
    expected = pf.field(points, PISTONS, K, order=20)
    points[row, column] = value
    p = pf.field(points, PISTONS, K, order=20)
    assert np.isnan(p[row].real)
    assert np.isnan(p[row].imag)
    assert bits(p[others]) == bits(expected[others])


def allocated_by_numpy(points: NDArray[Any]) -> int:
    """The most bytes that arrays of NumPy take during a call. The result is not one of them."""
    pf.field(points, PISTONS, K)
    tracemalloc.start()
    try:
        pf.field(points, PISTONS, K)
        return tracemalloc.get_traced_memory()[1]
    finally:
        tracemalloc.stop()


def test_doubles_in_order_are_not_copied() -> None:
    points = np.random.default_rng(1).uniform(-10, 10, (10, 1000, 3))
    points.flags.writeable = False
    assert allocated_by_numpy(points) < points.nbytes / 10
    assert allocated_by_numpy(points[2:, ::-1][:, ::-1]) < points.nbytes / 10
    assert allocated_by_numpy(points.astype(np.float32)) >= points.nbytes


def test_the_result_is_the_callers_own() -> None:
    points = np.random.default_rng(1).uniform(-10, 10, (50, 3))
    first = pf.field(points, PISTONS, K)
    kept = first.copy()
    pf.field(points, PISTONS, 2 * K)[...] = 0
    assert bits(first) == bits(kept)
    first *= 2
    assert first.flags.writeable
    assert bits(pf.field(points, PISTONS, K)) == bits(kept)
