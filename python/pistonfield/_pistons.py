"""A piston, and the checks of arguments."""

from __future__ import annotations

from collections.abc import Iterable, Iterator
from dataclasses import dataclass
from typing import Any, Union

import numpy as np
from numpy.typing import ArrayLike, NDArray

_UNTURNED = [1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0]


@dataclass(frozen=True, init=False)
class Piston:
    """A flat rectangular piston, which moves with one velocity normal to its plane.

    Parameters
    ----------
    width, height : float
        Sides along the piston's own x and its own y: 0, or from 1e-9 to 1e6 wavelengths.
    centre : (3,) array_like of float
        Position of the centre.
    rotation : (3, 3) array_like of float, optional
        The columns are the directions of the piston's own x, y and z: unit vectors at right angles,
        right-handed, within 1e-6. It radiates towards its own z. By default it is not rotated.
    weight : complex
        The velocity of the piston. With 1 the pressure of a plane wave is 1.

    Raises
    ------
    ValueError
        If an argument has another shape or type. The values are checked when a field is computed.

    Examples
    --------
    A piston in the plane z = 0, and the same turned by 90 degrees towards x:

    >>> import pistonfield as pf
    >>> pf.Piston(10e-3, 15e-3)
    Piston(width=0.01, height=0.015, centre=(0.0, 0.0, 0.0), rotation=None, weight=(1+0j))
    >>> turned = pf.Piston(10e-3, 15e-3, rotation=[[0, 0, 1], [0, 1, 0], [-1, 0, 0]])
    """

    width: float
    height: float
    centre: tuple[float, float, float]
    rotation: tuple[tuple[float, float, float], ...] | None
    weight: complex

    def __init__(
        self,
        width: float,
        height: float,
        centre: ArrayLike = (0, 0, 0),
        rotation: ArrayLike | None = None,
        weight: complex = 1,
    ) -> None:
        self._set("width", real_number("width", width))
        self._set("height", real_number("height", height))
        self._set("centre", tuple(real_array("centre", centre, (3,)).tolist()))
        rows = None if rotation is None else real_array("rotation", rotation, (3, 3)).tolist()
        self._set("rotation", rows and tuple(map(tuple, rows)))
        self._set("weight", complex_number("weight", weight))

    def _set(self, name: str, value: object) -> None:
        object.__setattr__(self, name, value)  # the class is frozen

    def _row(self) -> list[float]:
        directions = _UNTURNED if self.rotation is None else np.ravel(self.rotation, order="F").tolist()
        return [self.width, self.height, *self.centre, *directions, self.weight.real, self.weight.imag]


Pistons = Union[Piston, Iterable[Piston]]


def piston_rows(pistons: Pistons) -> NDArray[np.float64]:
    """The pistons as an array of 16 numbers a row."""
    if isinstance(pistons, Piston):
        pistons = [pistons]
    given = list(pistons) if isinstance(pistons, Iterable) else [pistons]
    if not all(isinstance(piston, Piston) for piston in given):
        raise ValueError("pistons must be a Piston or a sequence of Pistons.")
    if not given and isinstance(pistons, Iterator):
        raise ValueError("pistons must not be an iterator without a next Piston: pass a list, which can be used twice.")
    return np.array([piston._row() for piston in given], dtype=np.float64).reshape(-1, 16)


def pistons_of(rows: NDArray[np.float64]) -> list[Piston]:
    """The pistons of such an array."""
    return [
        Piston(
            row[0],
            row[1],
            row[2:5],
            None if row[5:14] == _UNTURNED else np.reshape(row[5:14], (3, 3)).T,
            complex(*row[14:]),
        )
        for row in rows.tolist()
    ]


def point_rows(points: ArrayLike) -> tuple[NDArray[np.float64], tuple[int, ...]]:
    """The points as (N, 3), and the shape of their pressures."""
    array = _real("points", points)
    if array.ndim == 2 and array.shape[0] == 3 != array.shape[1]:
        raise ValueError(
            f"points must have the shape (..., 3), not {array.shape}. Pass points.T, in which each row is a point."
        )
    if array.ndim == 0 or array.shape[-1] != 3:
        raise ValueError(f"points must have the shape (..., 3), not {array.shape}.")
    return real_array("points", array.reshape(-1, 3), (None, 3)), array.shape[:-1]


def axis(name: str, values: ArrayLike) -> NDArray[np.float64]:
    """The values of an axis as doubles; one number is an axis of one value."""
    array = np.atleast_1d(_real(name, values))
    if array.ndim > 1:
        raise ValueError(
            f"{name} must have the shape (N,), not {array.shape}. Pass the values of the axis: grid makes the mesh."
        )
    return real_array(name, array, (None,))


def real_array(name: str, values: ArrayLike, shape: tuple[int | None, ...]) -> NDArray[np.float64]:
    """The values as aligned doubles, in C order; no copy if they are. None in the shape is any length."""
    array = _real(name, values)
    expected = tuple("N" if length is None else length for length in shape)
    if array.ndim != len(shape) or any(n is not None and n != m for n, m in zip(shape, array.shape)):
        raise ValueError(f"{name} must have the shape {expected}, not {array.shape}.".replace("'", ""))
    return np.require(array, np.float64, ["C_CONTIGUOUS", "ALIGNED"])


def real_number(name: str, value: ArrayLike) -> float:
    """The value as a float."""
    array = array_of(value)
    if array.ndim != 0 or not np.can_cast(array.dtype, np.float64, "safe"):
        raise ValueError(f"{name} must be one real number.")
    return float(array)


def complex_number(name: str, value: ArrayLike) -> complex:
    """The value as a complex number."""
    array = array_of(value)
    if array.ndim != 0 or not np.can_cast(array.dtype, np.complex128, "safe"):
        raise ValueError(f"{name} must be one complex number.")
    return complex(array.item())


def whole_number(name: str, value: object, most: int) -> int:
    """The value as an int from 1 on."""
    if isinstance(value, (int, np.integer)) and not isinstance(value, bool) and 1 <= value <= most:
        return int(value)
    raise ValueError(f"{name} must be an integer from 1 to {most}.")


def array_of(values: object) -> NDArray[Any]:
    """The values as an array. Rows of different lengths are an object, as are masked values."""
    try:
        return np.array(None) if np.ma.is_masked(values) else np.asarray(values)
    except ValueError:
        return np.array(None)


def _real(name: str, values: object) -> NDArray[Any]:
    array = array_of(values)
    if array.dtype == object:
        raise ValueError(f"{name} must be real numbers that fit float64, in rows of one length, none of them masked.")
    if not np.can_cast(array.dtype, np.float64, "safe"):
        raise ValueError(f"{name} must be real numbers that fit float64, not {array.dtype}.")
    return array
