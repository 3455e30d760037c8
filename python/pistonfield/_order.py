"""Orders of quadrature and their rules, for those who fix an order."""

from __future__ import annotations

import numpy as np
from numpy.typing import ArrayLike, NDArray

from . import _core
from ._pistons import Pistons, complex_number, piston_rows, point_rows, real_number, whole_number


def order(points: ArrayLike, pistons: Pistons, k: complex, tolerance: float) -> tuple[int, float]:
    """The lowest order of quadrature for a tolerance.

    `field` and `grid` do not need it: they meet a tolerance by themselves, with an order for each integral. It
    is for those who fix their order, for example for the same bits in blocks of points. At points behind a
    piston, pistonfield for MATLAB and Octave often needs a higher order than this.

    Parameters
    ----------
    points, pistons, k
        As for `field`.
    tolerance : float
        The largest error, relative to the peak of the magnitude at the points: from 1e-6 to below 1.

    Returns
    -------
    order : int
        The lowest order, up to 384, whose error is below the tolerance at all points.
    error : float
        Its largest error at the points, relative to their peak.

    Raises
    ------
    ValueError
        If an argument has another shape or type.
    FieldError
        A ValueError, if the tolerance is out of its range or no order meets it.

    Notes
    -----
    Pressures of an order are compared with those of `field` for a hundredth of the tolerance. The error may go
    up and down before it stays small: the search halves the order until it is too low, goes down again from
    twice the last sufficient order in steps of 10 %, and bisects the remaining gap.

    Examples
    --------
    >>> import numpy as np
    >>> import pistonfield as pf
    >>> points = np.stack(np.meshgrid(np.arange(-10, 11), 0, np.arange(1, 41)), axis=-1)
    >>> order, error = pf.order(points, pf.Piston(5, 7.5), 2 * np.pi, 1e-3)
    >>> p = pf.field(points, pf.Piston(5, 7.5), 2 * np.pi, order=order)
    """
    rows, _ = point_rows(points)
    return _core.order_for(rows, piston_rows(pistons), complex_number("k", k), real_number("tolerance", tolerance))


def rule(order: int) -> tuple[NDArray[np.float64], NDArray[np.float64]]:
    """The Gauss-Legendre quadrature rule on [-1, 1].

    Parameters
    ----------
    order : int
        The number of nodes, from 1 to 512.

    Returns
    -------
    nodes, weights : (order,) ndarray of float64
        The nodes ascend. The sum of weights * f(nodes) is the integral of f, exactly for polynomials up to
        the degree 2 * order - 1.

    Raises
    ------
    ValueError
        If the order is not an integer in this range.

    Examples
    --------
    >>> import pistonfield as pf
    >>> nodes, weights = pf.rule(3)
    >>> [round(float(w * 9)) for w in weights]
    [5, 8, 5]
    """
    return _core.rule(order_number(order))


def order_number(order: object) -> int:
    """The order as an int."""
    return whole_number("order", order, 512)
