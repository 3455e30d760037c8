"""Pistons: how they are given, and what their numbers mean."""

from __future__ import annotations

import copy
import pickle
from collections.abc import Callable, Iterable
from typing import Any

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

import pistonfield as pf

K = 2 * np.pi
POINTS = np.random.default_rng(1).uniform([-5, -5, 0.5], [5, 5, 20], (40, 3))
ROW = [pf.Piston(1, 2, (x, 0, 0), weight=np.exp(1j * x)) for x in (-2, 0, 2)]


@pytest.mark.parametrize("collect", [list, tuple, iter, lambda row: (piston for piston in row), np.array])
def test_any_collection_of_pistons(collect: Callable[[Iterable[pf.Piston]], Any]) -> None:
    expected = pf.field(POINTS, ROW, K)
    assert abs(expected).max() > 0.1
    assert np.array_equal(pf.field(POINTS, collect(ROW), K), expected)
    assert np.array_equal(pf.grid([0, 1], 0, [2, 3], collect(ROW), K), pf.grid([0, 1], 0, [2, 3], ROW, K))


def test_one_piston_is_a_list_of_one() -> None:
    assert np.array_equal(pf.field(POINTS, ROW[0], K), pf.field(POINTS, [ROW[0]], K))


def test_no_pistons_have_no_field() -> None:
    assert np.array_equal(pf.field(POINTS, [], K), np.zeros(len(POINTS)))


def test_the_field_is_the_weighted_sum() -> None:
    total = sum(pf.field(POINTS, piston, K, tolerance=1e-11) for piston in ROW)
    assert abs(pf.field(POINTS, ROW, K, tolerance=1e-11) - total).max() < 1e-10
    twice = pf.Piston(1, 2, weight=2)
    assert abs(pf.field(POINTS, twice, K) - 2 * pf.field(POINTS, pf.Piston(1, 2), K)).max() < 1e-3


@given(st.floats(-np.pi, np.pi), st.floats(-np.pi, np.pi), st.tuples(*[st.floats(-3, 3)] * 3))
def test_a_moved_piston_moves_its_field(a: float, b: float, centre: tuple[float, float, float]) -> None:
    about_y = np.array([[np.cos(a), 0, np.sin(a)], [0, 1, 0], [-np.sin(a), 0, np.cos(a)]])
    about_z = np.array([[np.cos(b), -np.sin(b), 0], [np.sin(b), np.cos(b), 0], [0, 0, 1]])
    rotation = about_z @ about_y
    moved = POINTS @ rotation.T + np.array(centre)
    p = pf.field(moved, pf.Piston(3, 1, centre, rotation), K, tolerance=1e-6)
    expected = pf.field(POINTS, pf.Piston(3, 1), K, tolerance=1e-6)
    assert abs(p - expected).max() < 3e-6 * abs(expected).max()


def test_width_is_along_x() -> None:
    wide = abs(pf.field([[6, 0, 2], [0, 6, 2]], pf.Piston(10, 1), K))
    assert wide[0] > 2 * wide[1]


def test_wave_numbers_of_zero_and_below() -> None:
    piston = pf.Piston(5, 7.5)
    assert np.array_equal(pf.field(POINTS, piston, 0), np.zeros(len(POINTS)))
    assert np.array_equal(pf.field(POINTS, piston, -K), -np.conj(pf.field(POINTS, piston, K)))


def test_a_piston_is_a_value() -> None:
    rotation = np.eye(3)
    weight = np.array(2.0)
    piston = pf.Piston(np.float32(1), np.int8(2), np.zeros(3, "f4"), rotation, weight)
    rotation[0, 0] = weight[...] = 7
    assert piston == pf.Piston(1, 2, (0, 0, 0), ((1, 0, 0), (0, 1, 0), (0, 0, 1)), 2)
    assert hash(piston) == hash(pf.Piston(1, 2, rotation=np.eye(3), weight=2))
    assert pickle.loads(pickle.dumps(piston)) == copy.deepcopy(piston) == piston
    assert eval(repr(piston), {"Piston": pf.Piston}) == piston
    with pytest.raises(AttributeError):
        piston.width = 3  # type: ignore[misc]
