"""Quadrature rules and their orders."""

from __future__ import annotations

import numpy as np
import pytest

import pistonfield as pf

K = 2 * np.pi
PISTON = pf.Piston(5, 7.5)
POINTS = np.stack(np.meshgrid(np.linspace(-8, 8, 33), [0, 1.5], np.linspace(0.5, 30, 60)), axis=-1)


@pytest.mark.parametrize("order", [1, 2, 3, 5, 10, 31, 64, 100])
def test_rules_are_those_of_numpy(order: int) -> None:
    nodes, weights = pf.rule(order)
    expected_nodes, expected_weights = np.polynomial.legendre.leggauss(order)
    assert nodes.dtype == weights.dtype == np.float64
    assert nodes == pytest.approx(expected_nodes, abs=2e-15)
    assert weights == pytest.approx(expected_weights, abs=1e-14)  # to which NumPy computes them


def test_the_highest_order_integrates_a_polynomial() -> None:
    nodes, weights = pf.rule(512)
    assert nodes.shape == weights.shape == (512,)
    assert (np.diff(nodes) > 0).all()
    assert weights @ nodes**1000 == pytest.approx(2 / 1001, rel=1e-12)


def test_the_arrays_of_a_rule_outlive_each_other() -> None:
    nodes, weights = pf.rule(9)
    kept = weights.copy()
    del nodes
    pf.rule(9)[0][...] = 0
    assert np.array_equal(weights, kept)


@pytest.mark.parametrize("integer", [10, np.int64(10), np.uint8(10)])
def test_integers_of_any_type(integer: int) -> None:
    assert np.array_equal(pf.rule(integer)[0], pf.rule(10)[0])


@pytest.mark.parametrize("tolerance", [1e-1, 1e-3, 1e-5])
def test_the_lowest_order_for_a_tolerance(tolerance: float) -> None:
    order, error = pf.order(POINTS, PISTON, K, tolerance)
    exact = pf.field(POINTS, PISTON, K, tolerance=1e-11)

    def error_of(order: int) -> float:
        return float(abs(pf.field(POINTS, PISTON, K, order=order) - exact).max() / abs(exact).max())

    assert error_of(order) < 1.02 * tolerance
    assert error == pytest.approx(error_of(order), abs=0.02 * tolerance)
    assert error_of(order - 1) > 0.98 * tolerance


def test_an_order_is_used_in_place_of_the_tolerance() -> None:
    p, used = pf.field(POINTS, PISTON, K, order=7, full_output=True)
    assert used.orders == (7, 7)
    assert used.precision == "single"
    assert np.isnan(used.bound)
    assert np.array_equal(p, pf.field(POINTS, PISTON, K, order=7, tolerance=1e-9))


def test_no_order_meets_the_tolerance() -> None:
    with pytest.raises(pf.FieldError, match="No order up to 384 meets the tolerance"):
        pf.order([0, 0, 1], pf.Piston(5000, 5000), K, 1e-6)
