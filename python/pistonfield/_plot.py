"""Pictures of fields, with matplotlib."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Literal

import numpy as np
from numpy.typing import ArrayLike, NDArray

from ._pistons import array_of, axis

if TYPE_CHECKING:
    from matplotlib.axes import Axes
    from matplotlib.image import AxesImage

_SMALLEST = float(np.finfo(np.float64).tiny)


def plot(
    x: ArrayLike,
    y: ArrayLike,
    z: ArrayLike,
    p: ArrayLike,
    quantity: Literal["linear", "dB", "phase"] = "linear",
    limits: tuple[float, float] | None = None,
    *,
    unit: str | None = None,
    label: str | None = None,
    title: str | None = None,
    axes: str | None = None,
    ax: Axes | None = None,
) -> AxesImage:
    """Picture of a pressure field on a plane.

    Draws with equal scales in both directions and a colour bar. It requires matplotlib, which
    ``pip install pistonfield[plot]`` installs.

    Parameters
    ----------
    x, y, z : (N,) array_like of float, or float
        The axes of the plane, evenly spaced; exactly one is a single value. The horizontal direction is z, or x
        if the plane is z = constant. They are in metres, at most 1, and drawn in millimetres, unless `axes`
        names another unit.
    p : array_like of complex
        The pressures: the result of `grid` for these axes. NaN and masked values have no colour.
    quantity : {'linear', 'dB', 'phase'}
        The magnitude; the magnitude in decibels relative to the largest in the picture; or the phase in
        degrees, in cyclic colours.
    limits : (float, float), optional
        The lowest and the highest value of the colours, in the unit of p, in decibels or in degrees. By
        default 0 and the largest, -40 and 0, -180 and 180.
    unit : str, optional
        The unit of p, for example 'Pa' (the bar then shows Pa, kPa or MPa). Without a unit and a label, the bar
        states that a plane wave has magnitude 1, as in the results of `field`.
    label : str, optional
        The label of the colour bar, instead of abs(p) or phase.
    title : str, optional
        The title of the picture. By default the position of the plane.
    axes : {'m', 'cm', 'mm', 'um', 'wavelengths'}, optional
        The unit of x, y and z in the arguments and in the picture.
    ax : matplotlib.axes.Axes, optional
        Where to draw; by default the current axes. A picture that is already there is replaced.

    Returns
    -------
    matplotlib.image.AxesImage
        The picture. Its ``axes`` are the axes, ``axes.figure`` the figure and ``colorbar`` the colour bar.

    Raises
    ------
    ValueError
        If an argument is not as above; the message names it.

    Examples
    --------
    >>> import numpy as np
    >>> import pistonfield as pf
    >>> x, z = np.linspace(-10e-3, 10e-3, 201), np.linspace(0.2e-3, 40e-3, 400)
    >>> p = pf.grid(x, 0, z, pf.Piston(7.5e-3, 11e-3), 2 * np.pi / 1.5e-3)
    >>> image = pf.plot(x, 0, z, p, 'dB')
    """
    import matplotlib.pyplot as plt
    from matplotlib.axes import Axes
    from mpl_toolkits.axes_grid1 import make_axes_locatable  # type: ignore[import-untyped]

    sides = [axis("x", x), axis("y", y), axis("z", z)]
    drawn = [n for n in range(3) if sides[n].size != 1]
    if len(drawn) != 2 or not all(_is_even(side) for side in sides):
        raise ValueError("x, y and z must be evenly spaced, and exactly one of them must be a single value.")
    pressures = np.ma.filled(np.ma.asarray(p).astype(np.complex128), np.nan) if np.ma.is_masked(p) else array_of(p)
    if pressures.dtype.kind not in "biufc":
        raise ValueError(f"p must be complex or real numbers, not {pressures.dtype}.")
    if pressures.shape not in (tuple(s.size for s in sides), tuple(sides[n].size for n in drawn)):
        raise ValueError("p must have the shape that grid returns for these axes.")
    picture = pressures.reshape([sides[n].size for n in drawn])
    sides, length = _drawn_lengths(sides, axes)
    up, across = drawn
    if across != 2:  # the plane z = constant
        picture, up, across = picture.T, across, up

    values, shown, text = _values(picture, quantity, limits, unit, label)
    ax = plt.gca() if ax is None else ax
    if not isinstance(ax, Axes):
        raise ValueError(f"ax must be the axes of a figure, not {type(ax).__name__}.")
    for before in ax.get_images():
        if before.colorbar is not None:
            before.colorbar.remove()
        before.remove()
    image = ax.imshow(
        values,
        origin="lower",
        extent=(*_extent(sides[across]), *_extent(sides[up])),
        vmin=shown[0],
        vmax=shown[1],
        cmap="twilight" if quantity == "phase" else "viridis",
    )
    point = 3 - up - across
    ax.set(
        xlabel=f"{'xyz'[across]} / {length}",
        ylabel=f"{'xyz'[up]} / {length}",
        title=title if title is not None else f"{'xyz'[point]} = {sides[point][0]:g} {length}",
    )
    beside = make_axes_locatable(ax).append_axes("right", size=0.15, pad=0.1)  # as high as the picture
    ax.figure.colorbar(image, cax=beside, label=text)
    ax.figure.sca(ax)
    return image


def _is_even(side: NDArray[np.float64]) -> bool:
    steps = np.diff(side)
    return bool(
        np.isfinite(side).all()
        and side.size > 0
        and (steps.size == 0 or (steps[0] != 0 and (abs(steps - steps[0]) < 1e-3 * abs(steps[0])).all()))
    )


def _extent(side: NDArray[np.float64]) -> tuple[float, float]:
    """From the edge of the first pixel to that of the last."""
    half = (side[1] - side[0]) / 2
    return float(side[0] - half), float(side[-1] + half)


def _drawn_lengths(sides: list[NDArray[np.float64]], unit: str | None) -> tuple[list[NDArray[np.float64]], str]:
    if unit is None:
        largest = max(float(abs(side).max()) for side in sides)
        if largest > 1:
            raise ValueError(
                f"x, y and z must be in metres, but reach {largest:g}. If they are in millimetres, add "
                "axes='mm'; if they are in metres, add axes='m'."
            )
        return [side * 1e3 for side in sides], "mm"
    if unit not in ("m", "cm", "mm", "um", "wavelengths"):
        raise ValueError("axes must be 'm', 'cm', 'mm', 'um' or 'wavelengths'.")
    return sides, unit


def _values(
    p: NDArray[Any], quantity: str, limits: tuple[float, float] | None, unit: str | None, label: str | None
) -> tuple[NDArray[np.float64], tuple[float, float], str]:
    """The values to draw, their limits and the label of the bar."""
    limits = None if limits is None else _ascending(limits)
    magnitude = np.abs(p).astype(np.float64)
    largest = float(np.max(magnitude[np.isfinite(magnitude)], initial=_SMALLEST))
    is_zero = largest == _SMALLEST
    if quantity == "linear":
        shown = limits or (0.0, 1.0 if is_zero else largest)
        factor, unit = _prefixed(unit, max(abs(shown[0]), abs(shown[1])))
        suffix = f" / {unit}" if unit else "" if label else ", plane wave = 1"
        return magnitude * factor, (shown[0] * factor, shown[1] * factor), (label or "|p|") + suffix
    if quantity == "dB":
        with np.errstate(divide="ignore"):
            values = 20 * np.log10(magnitude / largest)
        shown = limits or (-40.0, 0.0)
        factor, unit = _prefixed(unit, largest)
        suffix = f" / dB, 0 = {largest * factor:.3g} {unit}" if unit and not is_zero else " / dB, largest = 0"
        return np.maximum(values, shown[0]), shown, (label or "|p|") + suffix  # matplotlib draws no -inf
    if quantity == "phase":
        return np.angle(p, deg=True), limits or (-180.0, 180.0), (label or "phase") + " / degrees"
    raise ValueError("quantity must be 'linear', 'dB' or 'phase'.")


def _ascending(limits: ArrayLike) -> tuple[float, float]:
    pair = array_of(limits)
    if (
        pair.shape == (2,)
        and np.can_cast(pair.dtype, np.float64, "safe")
        and np.isfinite(pair).all()
        and pair[0] < pair[1]
    ):
        return float(pair[0]), float(pair[1])
    raise ValueError("limits must be two finite numbers in ascending order.")


def _prefixed(unit: str | None, value: float) -> tuple[float, str | None]:
    """The unit in which the value is easiest to read, and the factor that converts to it."""
    if unit == "Pa" and value >= 999.5e3:
        return 1e-6, "MPa"
    if unit == "Pa" and value >= 999.5:
        return 1e-3, "kPa"
    return 1.0, unit
