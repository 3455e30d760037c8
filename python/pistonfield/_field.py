"""Fields at points and on grids."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Literal, overload

from numpy.typing import ArrayLike

from . import _core
from ._core import Pressures, Progress
from ._order import order_number
from ._pistons import Pistons, axis, complex_number, piston_rows, point_rows, real_number


@dataclass(frozen=True)
class Used:
    """What a computation used.

    Parameters
    ----------
    orders : tuple of int
        The lowest and the highest order of a quadrature rule; 0, 0 if no integral was needed.
    precision : {'single', 'double', 'both', 'none'}
        The precision in which integrals were evaluated.
    nodes : float
        How many values of integrands were computed.
    bound : float
        An upper bound of the absolute error of a pressure; NaN for a given order.
    """

    orders: tuple[int, int]
    precision: Literal["single", "double", "both", "none"]
    nodes: float
    bound: float


@overload
def field(
    points: ArrayLike,
    pistons: Pistons,
    k: complex,
    *,
    tolerance: float = ...,
    order: int | None = ...,
    progress: Progress = ...,
    full_output: Literal[False] = ...,
) -> Pressures: ...
@overload
def field(
    points: ArrayLike,
    pistons: Pistons,
    k: complex,
    *,
    tolerance: float = ...,
    order: int | None = ...,
    progress: Progress = ...,
    full_output: Literal[True],
) -> tuple[Pressures, Used]: ...
def field(
    points: ArrayLike,
    pistons: Pistons,
    k: complex,
    *,
    tolerance: float = 1e-4,
    order: int | None = None,
    progress: Progress = None,
    full_output: bool = False,
) -> Pressures | tuple[Pressures, Used]:
    """Pressure of pistons at points.

    Adds the fields of M pistons, each moved, rotated and weighted::

        p(r) = sum over m of w_m f_m(R_m^T (r - c_m)),

        f(r) = k / (2 pi)  integral over the piston of  exp(-i k |r - r'|) / |r - r'|  dx' dy'

    with the weight w_m, the rotation R_m and the centre c_m. The Rayleigh-Sommerfeld integral f is computed as
    four integrals along the edges; behind a piston (z < 0 in its own coordinates) the result is theirs. Each
    piston lies in its own rigid plane; for pistons that are turned towards each other, the sum neglects
    shadowing and scattering.

    Parameters
    ----------
    points : (..., 3) array_like of float
        x, y, z of each point.
    pistons : Piston or iterable of Piston
    k : float or complex
        Wave number, 2 pi / wavelength. In a lossy medium ``2 * pi * f / c - 1j * pf.attenuation(a, f)``: its
        imaginary part is minus the attenuation in nepers per unit of length, at most the magnitude of the real part.
    tolerance : float
        The largest error of a pressure, relative to the peak of its magnitude at the points of this call:
        from 1e-12 to below 1.
    order : int, optional
        The order of all quadrature rules, 1 to 512, in place of the tolerance.
    progress : callable, optional
        Called with the fraction that is done, some 20 times a second at most, and with 1 at the end. An
        exception that it raises ends the computation.
    full_output : bool
        Whether to return also what was used.

    Returns
    -------
    p : (...) ndarray of complex128
        The pressures; NaN at points with a coordinate that is infinite or NaN.
    used : Used
        Only with full_output.

    Raises
    ------
    ValueError
        If an argument has another shape or type; the message names it.
    FieldError
        A ValueError, if a value is not in its range, if the tolerance cannot be kept, or if there is too
        little memory.

    See Also
    --------
    grid : the same on a grid, which is faster

    Notes
    -----
    The work is done on all cores, without the interpreter's lock. Ctrl-C ends it.

    Examples
    --------
    The pressure of a piston of 5 by 7.5 wavelengths on its axis, in front of it:

    >>> import numpy as np
    >>> import pistonfield as pf
    >>> wavelength = 1.5e-3
    >>> points = [[0, 0, 10 * wavelength], [0, 0, 20 * wavelength]]
    >>> p = pf.field(points, pf.Piston(5 * wavelength, 7.5 * wavelength), 2 * np.pi / wavelength)
    >>> np.round(abs(p), 2)
    array([1.3 , 1.43])
    """
    rows, shape = point_rows(points)
    arguments = (piston_rows(pistons), complex_number("k", k), real_number("tolerance", tolerance), _order(order))
    p, used = _core.pressures_at(rows, *arguments, progress_function(progress))
    p = p.reshape(shape)
    return (p, _used(used)) if full_output else p


@overload
def grid(
    x: ArrayLike,
    y: ArrayLike,
    z: ArrayLike,
    pistons: Pistons,
    k: complex,
    *,
    tolerance: float = ...,
    order: int | None = ...,
    progress: Progress = ...,
    full_output: Literal[False] = ...,
) -> Pressures: ...
@overload
def grid(
    x: ArrayLike,
    y: ArrayLike,
    z: ArrayLike,
    pistons: Pistons,
    k: complex,
    *,
    tolerance: float = ...,
    order: int | None = ...,
    progress: Progress = ...,
    full_output: Literal[True],
) -> tuple[Pressures, Used]: ...
def grid(
    x: ArrayLike,
    y: ArrayLike,
    z: ArrayLike,
    pistons: Pistons,
    k: complex,
    *,
    tolerance: float = 1e-4,
    order: int | None = None,
    progress: Progress = None,
    full_output: bool = False,
) -> Pressures | tuple[Pressures, Used]:
    """Pressure of pistons on a grid.

    The field is that of `field`, at all points (x[i], y[j], z[m]). Along an evenly spaced axis it is
    interpolated from few samples, which equal pistons share, and mirror images are computed once; the
    tolerance holds as for a list of points.

    Parameters
    ----------
    x, y, z : (N,) array_like of float, or float
        The axes of the grid, in any order and with any spacing.
    pistons, k, tolerance, order, progress, full_output
        As for `field`.

    Returns
    -------
    p : (len(x), len(y), len(z)) ndarray of complex128
        The pressures, x varying fastest in memory.
    used : Used
        Only with full_output.

    Raises
    ------
    ValueError
        As for `field`.
    FieldError
        As for `field`.

    Examples
    --------
    The plane y = 0 in front of a piston:

    >>> import numpy as np
    >>> import pistonfield as pf
    >>> x, z = np.linspace(-10, 10, 201), np.linspace(0.1, 40, 400)
    >>> p, used = pf.grid(x, 0, z, pf.Piston(5, 7.5), 2 * np.pi, full_output=True)
    >>> p.shape
    (201, 1, 400)
    >>> bool(used.bound <= 1e-4 * abs(p).max())
    True
    """
    axes = axis("x", x), axis("y", y), axis("z", z)
    arguments = (piston_rows(pistons), complex_number("k", k), real_number("tolerance", tolerance), _order(order))
    p, used = _core.pressures_on(axes, *arguments, progress_function(progress))
    p = p.reshape([values.size for values in axes], order="F")
    return (p, _used(used)) if full_output else p


def _order(order: int | None) -> int:
    """The order for the extension, in which 0 means that there is a tolerance."""
    return 0 if order is None else order_number(order)


def progress_function(progress: Progress) -> Progress:
    """The function, or None."""
    if progress is None or callable(progress):
        return progress
    raise ValueError("progress must be a function of one number, or None.")


def _used(facts: list[float]) -> Used:
    least, most, single, double, nodes, bound = facts
    precision: Literal["single", "double", "both", "none"]
    precision = ("both" if double else "single") if single else ("double" if double else "none")
    return Used((int(least), int(most)), precision, nodes, bound)
