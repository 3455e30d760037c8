"""Fields in lossy media, whose wave number is complex, and what takes the real part of it."""

from __future__ import annotations

import numpy as np
import pytest
from rayleigh import rayleigh_sum

import pistonfield as pf

K = 2 * np.pi - 0.3j
PISTONS = [pf.Piston(3, 2), pf.Piston(1, 4, (5, 1, 0), weight=0.5 - 0.5j)]
POINTS = np.random.default_rng(3).uniform((-10, -10, 1), (10, 10, 30), (40, 3))


@pytest.mark.parametrize("k", [K, np.complex64(K), -K.conjugate()])
@pytest.mark.parametrize("tolerance", [1e-3, 1e-8])
def test_a_list_of_points_is_the_double_sum(k: complex, tolerance: float) -> None:
    p, used = pf.field(POINTS, PISTONS, k, tolerance=tolerance, full_output=True)
    exact = rayleigh_sum(POINTS, PISTONS, complex(k), (60, 60))
    assert abs(p - exact).max() <= tolerance * abs(exact).max()
    assert used.bound <= tolerance * abs(exact).max()


def test_a_grid_is_its_points() -> None:
    x, y, z = np.linspace(-8, 8, 201), [0, 1.5], [4, 30]
    p = pf.grid(x, y, z, PISTONS, K)
    points = np.stack(np.meshgrid(x, y, z, indexing="ij"), axis=-1)
    assert abs(p - pf.field(points, PISTONS, K, tolerance=1e-8)).max() <= 1e-4 * abs(p).max()


def test_without_attenuation_k_is_real() -> None:
    for k in (complex(2 * np.pi, 0), complex(2 * np.pi, -0.0)):
        assert (pf.field(POINTS, PISTONS, k) == pf.field(POINTS, PISTONS, 2 * np.pi)).all()


def test_an_order_is_used_and_found() -> None:
    order, error = pf.order(POINTS, PISTONS, K, 1e-4)
    best = pf.field(POINTS, PISTONS, K, tolerance=1e-9)
    p, used = pf.field(POINTS, PISTONS, K, order=order, full_output=True)
    assert used.orders == (order, order)
    assert abs(p - best).max() == pytest.approx(error * abs(best).max(), rel=0.01)
    assert error < 1e-4
    assert abs(pf.field(POINTS, PISTONS, K, order=order - 1) - best).max() >= 1e-4 * abs(best).max()


def test_aiming_takes_the_real_part() -> None:
    assert pf.focused(PISTONS, (0, 0, 30), K) == pf.focused(PISTONS, (0, 0, 30), K.real)
    assert pf.steered(PISTONS, (1, 0, 3), K) == pf.steered(PISTONS, (1, 0, 3), K.real)
    for aim in (pf.focused, pf.steered):
        with pytest.raises(ValueError, match=r"^k must be a finite number\.$"):
            aim(PISTONS, (1, 0, 3), complex(1, np.inf))
        with pytest.raises(ValueError, match=r"^k must be one complex number\.$"):
            aim(PISTONS, (1, 0, 3), [1])  # type: ignore[arg-type]  # pyright: ignore[reportArgumentType]
