"""What people read off fields: beams, units, peaks; and the attenuation of a medium."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Union

import numpy as np
from numpy.typing import ArrayLike, NDArray

from . import _core
from ._pistons import array_of, real_number
from ._pistons import axis as axis_values

Numbers = Union[float, NDArray[np.float64]]


@dataclass(frozen=True)
class Beam:
    """What `beam` returns. Each is one number, or an array with one for each line.

    Parameters
    ----------
    peak : float or ndarray of float64
        The largest magnitude.
    position : float or ndarray of float64
        Where it is.
    width : float or ndarray of float64
        ``right - left``
    left, right : float or ndarray of float64
        The edges: the places nearest to the peak where the magnitude has dropped; NaN, as is the width, if it
        does not drop on that side within x.
    """

    peak: Numbers
    position: Numbers
    width: Numbers
    left: Numbers
    right: Numbers


def beam(x: ArrayLike, p: ArrayLike, drop: float = 6, *, axis: int = 0) -> Beam:
    """Peak, place and width of the beam in a field along a line.

    The peak is interpolated by the parabola through the largest sample and its neighbours, unless it is at an end
    of x or one neighbour is more than twice as far as the other. The edges are interpolated linearly. So errors
    fall with the square of the step. The width at -6 dB of the main lobe of a uniform aperture, or of a Gaussian,
    is accurate to 3 % with 3 steps in it, 0.8 % with 6, and 0.2 % with 12.

    Parameters
    ----------
    x : (N,) array_like of float
        Positions along the line, two or more in increasing order: across the beam for its width, along the beam
        for the length of a focus.
    p : array_like of complex
        Pressures, N along `axis`. With the result of ``grid(x, 0, z, ...)`` there is a beam for each z.
    drop : float
        In decibels. The default is a factor of 10**(-6 / 20) = 0.501 in magnitude.
    axis : int
        The axis of p that is along x.

    Returns
    -------
    Beam
        Arrays of the shape of p without `axis`. A line with a pressure that is NaN or infinite has NaN everywhere.

    Raises
    ------
    ValueError
        If an argument is not as above; the message names it.

    Examples
    --------
    The width of a beam against depth:

    >>> import numpy as np
    >>> import pistonfield as pf
    >>> x, z = np.linspace(-20e-3, 20e-3, 201), np.linspace(10e-3, 100e-3, 91)
    >>> p = pf.grid(x, 0, z, pf.Piston(7.5e-3, 11e-3), 2 * np.pi / 1.5e-3)
    >>> pf.beam(x, p[:, 0, :]).width.shape
    (91,)
    """
    positions = axis_values("x", x)
    pressures = _complex("p", p)
    if not -pressures.ndim <= axis < pressures.ndim or pressures.shape[axis] != len(positions):
        raise ValueError(
            f"p must have one number for each of x along its axis {axis}, not the shape {pressures.shape}."
        )
    lines = np.moveaxis(pressures, axis, -1)
    count = int(np.prod(lines.shape[:-1]))
    rows = np.require(lines.reshape(count, len(positions)), None, ["C_CONTIGUOUS", "ALIGNED"])
    numbers = _core.beams(positions, rows, real_number("drop", drop))
    return Beam(*(column.reshape(lines.shape[:-1])[()] for column in numbers.T))


def pascals(p: ArrayLike, velocity: complex, density: float, speed: complex) -> np.complex128 | NDArray[np.complex128]:
    """Pressure in pascals, ``1j * density * speed * velocity * p``.

    The plane wave in front of a large piston has magnitude 1 in the results of `field` and `grid`. (The pressure
    of a pulse against time has no factor 1j: multiply it by density * speed.)

    Parameters
    ----------
    p : array_like of complex
    velocity : complex
        Amplitude of the piston's velocity in m/s. From an amplitude A of its displacement, it is 2 pi f A.
    density : float
        Of the medium in kg/m^3, positive.
    speed : complex
        The speed of sound in m/s, positive. In a lossy medium it is 2 pi f / k, which is complex.

    Returns
    -------
    ndarray of complex128
        In Pa, of the shape of p.

    Raises
    ------
    ValueError
        If an argument is not as above; the message names it.

    Examples
    --------
    >>> import pistonfield as pf
    >>> abs(pf.pascals([-1j, 0], velocity=0.05, density=1000, speed=1500)).tolist()
    [75000.0, 0.0]
    """
    pressures = _complex("p", p)
    factors = {"velocity": _complex("velocity", velocity), "speed": _complex("speed", speed)}
    for name, factor in factors.items():
        if factor.ndim != 0 or not np.isfinite(factor):
            raise ValueError(f"{name} must be one finite number.")
    v, c = (complex(factor) for factor in factors.values())
    if not c.real > 0:
        raise ValueError("speed must have a positive real part.")
    return (1j * (_positive("density", density) * c * v) * pressures)[()]


def intensity(pressure: ArrayLike, density: float, speed: float) -> np.float64 | NDArray[np.float64]:
    """Intensity of a plane wave, averaged over time, ``abs(pressure)**2 / (2 * density * speed)``.

    This holds where the wave is nearly plane, as in a beam and in the far field. Next to the piston, and in a tight
    focus, pressure and velocity differ in phase or in direction.

    Parameters
    ----------
    pressure : array_like of complex
        Amplitudes of the pressure in Pa, as `pascals` returns them.
    density : float
        Of the medium in kg/m^3, positive.
    speed : float
        The speed of sound in m/s, positive. In a lossy medium it is 2 pi f / real(k).

    Returns
    -------
    ndarray of float64
        In W/m^2, of the shape of pressure. 10 W/m^2 are 1 mW/cm^2.

    Raises
    ------
    ValueError
        If an argument is not as above; the message names it.

    Examples
    --------
    >>> import pistonfield as pf
    >>> float(pf.intensity(75e3, density=1000, speed=1500))
    1875.0
    """
    pressures = _complex("pressure", pressure)
    squares = pressures.real**2 + pressures.imag**2
    return np.divide(squares, 2 * _positive("density", density) * _positive("speed", speed))[()]


def peaks(p: ArrayLike, *, axis: int = -1) -> tuple[np.float64 | NDArray[np.float64], np.float64 | NDArray[np.float64]]:
    """Peak positive and peak negative pressure of pulses.

    Both are magnitudes: the largest p and the largest -p over time, and at least 0, because before and after the
    pulse the pressure is 0. They are those of the samples. A sine, sampled n times in a period, can exceed them by
    pi**2 / (2 n**2): 2 % with 16 samples.

    Parameters
    ----------
    p : array_like of float
        Pressures against time.
    axis : int
        The axis of p that is time.

    Returns
    -------
    positive, negative : ndarray of float64
        Of the shape of p without `axis`. A NaN over time makes both NaN.

    Raises
    ------
    ValueError
        If an argument is not as above; the message names it.

    Examples
    --------
    >>> import pistonfield as pf
    >>> [float(peak) for peak in pf.peaks([0, 2, -3, 1])]
    [2.0, 3.0]
    """
    pressures = _numbers("p", p, np.float64)
    if not -pressures.ndim <= axis < pressures.ndim or pressures.shape[axis] == 0:
        raise ValueError(f"p must have pressures against time along its axis {axis}, not the shape {pressures.shape}.")
    positive, negative = pressures.max(axis), (-pressures).max(axis)
    return np.maximum(positive, 0.0)[()], np.maximum(negative, 0.0)[()]


def attenuation(coefficient: float, frequency: ArrayLike, exponent: float = 1.0) -> np.float64 | NDArray[np.float64]:
    """Attenuation of a medium in nepers per metre: ``coefficient * (frequency / 1e6)**exponent * 100 * log(10) / 20``.

    With it, the wave number of the medium is ``2 * pi * frequency / c - 1j * attenuation``, in 1/m.

    Parameters
    ----------
    coefficient : float
        In dB/(cm MHz^exponent), at least 0.
    frequency : array_like of float
        In Hz, positive.
    exponent : float
        From 0 to 3. That of soft tissue is about 1, that of water 2.

    Returns
    -------
    ndarray of float64
        In Np/m, of the shape of frequency.

    Raises
    ------
    ValueError
        If an argument is not as above; the message names it.

    Examples
    --------
    The wave number of a medium with 0.5 dB/(cm MHz), at 3 MHz:

    >>> import numpy as np
    >>> import pistonfield as pf
    >>> f, c = 3e6, 1540
    >>> k = 2 * np.pi * f / c - 1j * pf.attenuation(0.5, f)
    >>> round(float(k.imag), 4)
    -17.2694
    """
    decibels, power = real_number("coefficient", coefficient), real_number("exponent", exponent)
    frequencies = _numbers("frequency", frequency, np.float64)
    if not 0 <= decibels < np.inf:
        raise ValueError("coefficient must be a finite real number, at least 0.")
    if not np.all((frequencies > 0) & (frequencies < np.inf)):
        raise ValueError("frequency must be positive and finite.")
    if not 0 <= power <= 3:
        raise ValueError("exponent must be from 0 to 3.")
    alpha: NDArray[np.float64] = decibels * (frequencies / 1e6) ** power * (100 * np.log(10) / 20)
    return alpha[()]


def _numbers(name: str, values: ArrayLike, dtype: type) -> NDArray[Any]:
    array = array_of(values)
    if not np.can_cast(array.dtype, dtype, "safe"):
        kind = "real" if dtype is np.float64 else "complex or real"
        raise ValueError(f"{name} must be {kind} numbers, not {array.dtype}.")
    return array.astype(dtype)


def _complex(name: str, values: ArrayLike) -> NDArray[np.complex128]:
    return _numbers(name, values, np.complex128)


def _positive(name: str, value: ArrayLike) -> float:
    number = real_number(name, value)
    if not 0 < number < np.inf:
        raise ValueError(f"{name} must be positive and finite.")
    return number
