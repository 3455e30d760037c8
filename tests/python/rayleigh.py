"""The Rayleigh integral over each piston as a double sum, which shares nothing with the package."""

from __future__ import annotations

from collections.abc import Sequence

import numpy as np
from numpy.typing import ArrayLike, NDArray

import pistonfield as pf


def rayleigh_sum(
    points: ArrayLike, pistons: Sequence[pf.Piston], k: complex, nodes: tuple[int, int]
) -> NDArray[np.complex128]:
    """The pressure at points (N, 3) by a product of Gauss-Legendre rules, with so many nodes along width and height."""
    rules = [np.polynomial.legendre.leggauss(count) for count in nodes]
    u, v = (grid.ravel() / 2 for grid in np.meshgrid(rules[0][0], rules[1][0], indexing="ij"))
    weights = np.outer(rules[0][1], rules[1][1]).ravel() / 4
    p = np.zeros(len(np.asarray(points)), complex)
    for piston in pistons:
        turned = np.eye(3) if piston.rotation is None else np.array(piston.rotation)
        sources = np.stack([u * piston.width, v * piston.height, np.zeros_like(u)], axis=-1) @ turned.T + piston.centre
        r = np.linalg.norm(np.asarray(points)[:, None, :] - sources, axis=-1)
        p += piston.weight * piston.width * piston.height * (np.exp(-1j * k * r) / r) @ weights
    return k / (2 * np.pi) * p
