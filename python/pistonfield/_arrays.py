"""Arrays of pistons, and the weights that shape, steer and focus their beam."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from dataclasses import replace

import numpy as np
from numpy.typing import ArrayLike, NDArray

from . import _core
from ._pistons import (
    Piston,
    Pistons,
    array_of,
    complex_number,
    piston_rows,
    pistons_of,
    real_array,
    real_number,
    whole_number,
)


def linear_array(count: int, pitch: float, width: float, height: float) -> list[Piston]:
    """A row of elements along x in the plane z = 0, centred on the origin, from left to right.

    Parameters
    ----------
    count : int
        The number of elements, 1 to 1e6.
    pitch : float
        The distance between the centres of neighbours, above 0.
    width : float
        The side of an element along x: above 0 and, unless count is 1, at most the pitch.
    height : float
        The side of an element along y, above 0.

    Returns
    -------
    list of Piston

    Raises
    ------
    ValueError
        If an argument is not in its range; the message names it.

    See Also
    --------
    matrix_array, convex_array, weighted, steered, focused

    Examples
    --------
    The beam of 64 elements at 5 MHz in water, focused 30 mm ahead:

    >>> import numpy as np
    >>> import pistonfield as pf
    >>> wavelength = 1500 / 5e6
    >>> k = 2 * np.pi / wavelength
    >>> array = pf.linear_array(64, 0.3e-3, 0.27e-3, 5e-3)
    >>> array = pf.weighted(array, pf.apodization("hann", 64))
    >>> array = pf.focused(array, (0, 0, 30e-3), k)
    >>> x = np.linspace(-5e-3, 5e-3, 201)
    >>> p = pf.grid(x, 0, 30e-3, array, k)[:, 0, 0]
    >>> int(abs(p).argmax())
    100
    """
    return pistons_of(_core.linear_array(_count("count", count), *_lengths(pitch=pitch, width=width, height=height)))


def matrix_array(counts: Sequence[int], pitches: ArrayLike, width: float, height: float) -> list[Piston]:
    """Elements in rows and columns in the plane z = 0, centred on the origin.

    Parameters
    ----------
    counts : (2,) sequence of int
        The numbers of elements along x and along y; their product is at most 1e6. Element i + counts[0] * j is
        in the column i and the row j.
    pitches : (2,) array_like of float
        The distances between the centres of neighbours along x and along y, above 0.
    width, height : float
        The sides of an element along x and y: above 0, at most the pitch.

    Returns
    -------
    list of Piston

    Raises
    ------
    ValueError
        If an argument is not in its range; the message names it.

    Examples
    --------
    >>> import pistonfield as pf
    >>> len(pf.matrix_array((16, 8), (0.5e-3, 0.5e-3), 0.4e-3, 0.4e-3))
    128
    """
    nx, ny = _counts(counts, 2)
    pitch_x, pitch_y = real_array("pitches", pitches, (2,)).tolist()
    return pistons_of(_core.matrix_array(nx, ny, pitch_x, pitch_y, *_lengths(width=width, height=height)))


def convex_array(count: int, pitch: float, radius: float, width: float, height: float) -> list[Piston]:
    """Elements on an arc in the plane y = 0, the middle of which is the origin.

    The centre of curvature is (0, 0, -radius). With the angle a = (n - (count - 1) / 2) * pitch / radius, element
    n has the centre radius * (sin a, 0, cos a - 1) and radiates towards (sin a, 0, cos a).

    Parameters
    ----------
    count : int
        The number of elements, 1 to 1e6.
    pitch : float
        The distance between the centres of neighbours along the arc, above 0.
    radius : float
        Of the arc. If it is negative, the array is concave, and its elements radiate towards the centre of
        curvature. Its magnitude is at least count * pitch / (2 pi).
    width : float
        The side of an element along the arc: above 0 and, unless count is 1, at most the pitch.
    height : float
        The side of an element along y, above 0.

    Returns
    -------
    list of Piston

    Raises
    ------
    ValueError
        If an argument is not in its range; the message names it.

    Examples
    --------
    >>> import pistonfield as pf
    >>> array = pf.convex_array(128, 0.47e-3, 60e-3, 0.42e-3, 13e-3)
    """
    lengths = _lengths(pitch=pitch, radius=radius, width=width, height=height)
    return pistons_of(_core.convex_array(_count("count", count), *lengths))


def apodization(name: str, counts: int | Sequence[int], parameter: float | None = None) -> NDArray[np.float64]:
    """The weights of an array's elements, by the name of a window.

    The window covers the aperture, which includes half a pitch beyond the outermost centres: element n of N is
    at u = (2 n + 1 - N) / N, where -1 and 1 are the edges of the aperture. Its weight is

    - 1 for 'rectangular',
    - cos(pi u / 2)^2 for 'hann',
    - 0.54 + 0.46 cos(pi u) for 'hamming',
    - cos(pi v / (2 parameter))^2 for 'tukey', where v = abs(u) - 1 + parameter is above 0, and 1 elsewhere,
    - exp(-(parameter u)^2 / 2) for 'gauss'.

    Parameters
    ----------
    name : {'rectangular', 'hann', 'hamming', 'tukey', 'gauss'}
        The window.
    counts : int or (2,) sequence of int
        The number of elements of a row or an arc, or the numbers along x and y of a matrix array, whose weights
        are products.
    parameter : float, optional
        Of 'tukey', the part of the aperture that is tapered, 0 to 1 (0.5 by default); of 'gauss', half the
        aperture in standard deviations, 0 to 10 (2.5 by default).

    Returns
    -------
    (N,) ndarray of float64
        From 0 to 1, in the order of the elements.

    Raises
    ------
    ValueError
        If an argument is not in its range; the message names it.

    Examples
    --------
    >>> import pistonfield as pf
    >>> pf.apodization("hann", 4).round(3).tolist()
    [0.146, 0.854, 0.854, 0.146]
    """
    if not isinstance(name, str) or "\0" in name:
        raise ValueError("name must be the name of a window.")
    listed = [_count("counts", counts)] if isinstance(counts, (int, np.integer)) else _counts(counts, None)
    return _core.apodization(name, listed, None if parameter is None else real_number("parameter", parameter))


def weighted(pistons: Pistons, weights: ArrayLike) -> list[Piston]:
    """The pistons with their weights multiplied by others.

    Parameters
    ----------
    pistons : Piston or sequence of Piston
    weights : (M,) array_like of complex
        One for each piston.

    Returns
    -------
    list of Piston

    Raises
    ------
    ValueError
        If there is not one number for each piston.

    Examples
    --------
    >>> import pistonfield as pf
    >>> array = pf.linear_array(4, 1e-3, 0.9e-3, 5e-3)
    >>> array = pf.weighted(array, pf.apodization("hamming", 4))
    """
    listed = pistons_of(piston_rows(pistons))
    factors = array_of(weights)
    if factors.shape != (len(listed),) or not np.can_cast(factors.dtype, np.complex128, "safe"):
        raise ValueError(f"weights must have the shape ({len(listed)},), with a complex number for each piston.")
    return [replace(piston, weight=piston.weight * factor) for piston, factor in zip(listed, factors.tolist())]


def steered(pistons: Pistons, direction: ArrayLike, k: complex) -> list[Piston]:
    """The pistons with the phases that send a plane wave in a direction.

    Their weights are multiplied by ``exp(-i k c.d / |d|)``, with the centre c and the direction d.

    Parameters
    ----------
    pistons : Piston or sequence of Piston
    direction : (3,) array_like of float
        Not 0; its length does not matter.
    k : float or complex
        Wave number. It sets phases, so of a complex k the real part counts.

    Returns
    -------
    list of Piston

    Raises
    ------
    ValueError
        If an argument is not in its range; the message names it.

    Examples
    --------
    >>> import numpy as np
    >>> import pistonfield as pf
    >>> angle = np.radians(20)
    >>> array = pf.linear_array(64, 0.3e-3, 0.27e-3, 5e-3)
    >>> array = pf.steered(array, (np.sin(angle), 0, np.cos(angle)), 2 * np.pi / 0.5e-3)
    """
    towards = real_array("direction", direction, (3,))
    return pistons_of(_core.steered(piston_rows(pistons), towards, complex_number("k", k)))


def focused(pistons: Pistons, focus: ArrayLike, k: complex) -> list[Piston]:
    """The pistons with the phases with which their waves arrive at a point in phase.

    Their weights are multiplied by ``exp(i k (|f - c| - |f|))``, with the centre c and the focus f.

    Parameters
    ----------
    pistons : Piston or sequence of Piston
    focus : (3,) array_like of float
    k : float or complex
        Wave number. It sets phases, so of a complex k the real part counts.

    Returns
    -------
    list of Piston

    Raises
    ------
    ValueError
        If an argument is not in its range; the message names it.

    Examples
    --------
    >>> import numpy as np
    >>> import pistonfield as pf
    >>> array = pf.focused(pf.linear_array(64, 0.3e-3, 0.27e-3, 5e-3), (0, 0, 30e-3), 2 * np.pi / 0.5e-3)
    """
    at = real_array("focus", focus, (3,))
    return pistons_of(_core.focused(piston_rows(pistons), at, complex_number("k", k)))


def lensed(pistons: Pistons, focus: float, k: complex, tolerance: float = 1e-3) -> list[Piston]:
    """The pistons with a thin lens on each, an elevation focus, as strips along the piston's own y.

    The waves of a piston's face arrive in phase at the distance `focus` from its centre along its own z. At the
    height y of the face the lens multiplies the velocity by ``exp(i k (sqrt(focus**2 + y**2) - focus))``. A piston
    moves with one velocity, so it is replaced by strips of equal height, each with the phase of its middle.

    Parameters
    ----------
    pistons : Piston or sequence of Piston
    focus : float
        Not 0. If it is negative, the lens spreads the waves, as if they came from this distance behind the piston:
        the phase is that of -focus with the opposite sign.
    k : float or complex
        Wave number. It sets phases, so of a complex k the real part counts.
    tolerance : float
        The largest difference between the pressures of the strips and of the lens, relative to the largest
        pressure: from 1e-12 to below 1.

    Returns
    -------
    list of Piston
        The strips of the first piston, from its lower to its upper edge, then those of the next.

    Raises
    ------
    ValueError
        If an argument is not in its range; the message names it.
    FieldError
        If there would be more than 1e6 strips.

    Notes
    -----
    The tolerance holds for each piston at points that are at least a wavelength away from it, if `focus` is at
    least a tenth of its height in magnitude. Nearer, the steps between the strips are seen: at the face the error
    is up to ten times as large. The errors of the pistons add up as their waves do, so an array in focus keeps the
    tolerance, too. The tolerance of `field` and `grid` comes on top. The number of strips is proportional to
    ``1 / sqrt(tolerance)``, unless they would be higher than half a wavelength. The lens holds for one wave number:
    `pulse` and `echo` refuse its complex weights.

    Examples
    --------
    Focused at 30 mm in azimuth and at 25 mm in elevation:

    >>> import numpy as np
    >>> import pistonfield as pf
    >>> k = 2 * np.pi * 5e6 / 1540
    >>> array = pf.focused(pf.linear_array(64, 0.3e-3, 0.27e-3, 5e-3), (0, 0, 30e-3), k)
    >>> len(pf.lensed(array, 25e-3, k, tolerance=1e-2)) // 64
    55
    """
    numbers = real_number("focus", focus), complex_number("k", k), real_number("tolerance", tolerance)
    return pistons_of(_core.lensed(piston_rows(pistons), *numbers))


def _count(name: str, value: object) -> int:
    return whole_number(name, value, 1_000_000)


def _counts(values: object, length: int | None) -> list[int]:
    listed = list(values) if isinstance(values, Iterable) else []
    if len(listed) != length and not (length is None and len(listed) in (1, 2)):
        raise ValueError("counts must be two integers." if length else "counts must be one or two integers.")
    return [_count("counts", value) for value in listed]


def _lengths(**lengths: float) -> list[float]:
    return [real_number(name, value) for name, value in lengths.items()]
