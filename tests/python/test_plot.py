"""What a picture shows: its data, limits, labels and units."""

from __future__ import annotations

import subprocess
import sys
from collections.abc import Iterator
from typing import Any

import matplotlib.pyplot as plt
import numpy as np
import pytest

import pistonfield as pf

X = np.array([-1, 0, 1]) * 1e-3
Z = np.array([1, 2]) * 1e-3
P = np.array([[1, 2j], [4, -1], [0.5, 1]])


@pytest.fixture(autouse=True)
def _figures() -> Iterator[None]:
    yield
    plt.close("all")


class Drawn:
    """What one picture shows."""

    def __init__(self, *arguments: Any, **options: Any) -> None:
        self.image = pf.plot(*arguments, ax=plt.figure().gca(), **options)
        self.data = np.ma.filled(np.ma.asarray(self.image.get_array()), np.nan)
        ax = self.image.axes
        self.texts = (ax.get_xlabel(), ax.get_ylabel(), ax.get_title())
        assert self.image.colorbar is not None
        self.bar = self.image.colorbar.ax.get_ylabel()
        self.limits = self.image.get_clim()
        assert (self.image.colorbar.vmin, self.image.colorbar.vmax) == self.limits
        self.image.axes.figure.canvas.draw()  # so that everything is drawn at least once


def test_magnitudes_in_the_plane_of_y_with_z_horizontal_in_millimetres() -> None:
    drawn = Drawn(X, 2e-3, Z, P)
    assert np.array_equal(drawn.data, abs(P))
    assert drawn.texts == ("z / mm", "x / mm", "y = 2 mm")
    assert drawn.limits == (0, 4)
    assert drawn.image.get_extent() == pytest.approx([0.5, 2.5, -1.5, 1.5])
    assert drawn.image.origin == "lower"
    assert drawn.image.axes.get_aspect() == 1


def test_a_plane_of_x_has_z_horizontal() -> None:
    drawn = Drawn(0, X, Z, P)
    assert np.array_equal(drawn.data, abs(P))
    assert drawn.texts == ("z / mm", "y / mm", "x = 0 mm")


def test_a_plane_of_z_has_x_horizontal() -> None:
    drawn = Drawn(X, Z, 5e-3, P)
    assert np.array_equal(drawn.data, abs(P).T)
    assert drawn.texts == ("x / mm", "y / mm", "z = 5 mm")
    assert drawn.bar == "|p|, plane wave = 1"
    assert drawn.image.get_extent() == pytest.approx([-1.5, 1.5, 0.5, 2.5])


def test_pascals_by_the_limits_of_the_bar() -> None:
    drawn = Drawn(X, 0, Z, 50 * P, unit="Pa")
    assert (drawn.bar, drawn.limits) == ("|p| / Pa", (0, 200))
    assert np.array_equal(drawn.data, 50 * abs(P))
    drawn = Drawn(X, 0, Z, 300 * P, unit="Pa")
    assert drawn.bar == "|p| / kPa"
    assert drawn.limits == pytest.approx((0, 1.2))
    assert drawn.data == pytest.approx(0.3 * abs(P))
    drawn = Drawn(X, 0, Z, 300 * P, "linear", (0, 2e6), unit="Pa")
    assert drawn.bar == "|p| / MPa"
    assert drawn.limits == pytest.approx((0, 2))
    assert Drawn(X, 0, Z, 300e3 * P, "dB", unit="Pa").bar == "|p| / dB, 0 = 1.2 MPa"
    drawn = Drawn(X, 0, Z, 300 * P, "linear", unit="W/m^2")
    assert drawn.bar == "|p| / W/m^2"
    assert np.array_equal(drawn.data, 300 * abs(P))


def test_a_label_and_a_title() -> None:
    drawn = Drawn(X, 0, Z, 300 * P, title="One piston", label="amplitude", unit="Pa")
    assert (drawn.bar, drawn.texts[2]) == ("amplitude / kPa", "One piston")
    drawn = Drawn(X, 0, Z, P, "phase", (-90, 90), label="angle of p")
    assert (drawn.bar, drawn.limits, drawn.texts[2]) == ("angle of p / degrees", (-90, 90), "y = 0 mm")
    assert Drawn(X, 0, Z, P, label="intensity").bar == "intensity"
    assert Drawn(X, 0, Z, P, title="").texts[2] == ""


def test_decibels() -> None:
    drawn = Drawn(X, 0, Z, P, "dB")
    assert drawn.data == pytest.approx(20 * np.log10(abs(P) / 4))
    assert (drawn.bar, drawn.limits) == ("|p| / dB, largest = 0", (-40, 0))
    drawn = Drawn(X, 0, Z, P, "dB", (-12, 0))
    assert drawn.limits == (-12, 0)
    assert drawn.data == pytest.approx(np.maximum(20 * np.log10(abs(P) / 4), -12))
    assert Drawn(X, 0, Z, P, "dB", unit="Pa").bar == "|p| / dB, 0 = 4 Pa"
    assert Drawn(X, 0, Z, 249.9 * P, "dB", unit="Pa").bar == "|p| / dB, 0 = 1 kPa"


def test_zero_pressure_has_the_lowest_colour_and_nan_has_none() -> None:
    p = np.array([[1, 2], [np.nan, 3], [0, 5]])
    drawn = Drawn(X, 0, Z, p, "dB")
    assert np.isnan(drawn.data[1, 0])
    assert drawn.data[2, 0] == -40
    assert np.isfinite(np.delete(drawn.data.ravel(), 2)).all()
    colours = drawn.image.cmap(drawn.image.norm(drawn.image.get_array()))
    assert np.array_equal(colours[2, 0], drawn.image.cmap(0))


def test_a_field_of_zeros() -> None:
    drawn = Drawn(X, 0, Z, 0 * P, "dB", unit="Pa")
    assert drawn.bar == "|p| / dB, largest = 0"
    assert (drawn.data == -40).all()
    assert Drawn(X, 0, Z, 0 * P).limits == (0, 1)


def test_phases_in_cyclic_colours() -> None:
    drawn = Drawn(X, 0, Z, P, "phase")
    assert drawn.data == pytest.approx(np.degrees(np.angle(P)))
    assert (drawn.bar, drawn.limits) == ("phase / degrees", (-180, 180))
    ends = drawn.image.cmap([0.0, 1.0])
    assert abs(ends[0] - ends[1]).max() < 0.02
    assert Drawn(X, 0, Z, P).image.cmap.name == "viridis"


@pytest.mark.parametrize("unit", ["m", "cm", "mm", "um", "wavelengths"])
def test_the_unit_of_the_axes(unit: str) -> None:
    drawn = Drawn(X * 1e6, 2e3, Z * 1e6, P, axes=unit)
    assert drawn.texts == (f"z / {unit}", f"x / {unit}", f"y = 2000 {unit}")
    assert drawn.image.get_extent() == pytest.approx([500, 2500, -1500, 1500])


def test_infinity_does_not_count_for_the_limits() -> None:
    assert Drawn(X, 0, Z, [[1, 2], [np.nan, np.inf], [3, -np.inf]]).limits == (0, 3)


def test_all_numeric_types() -> None:
    drawn = Drawn(np.int8([-1, 0, 1]), np.float32(0), [0, 1], P.astype(np.complex64), limits=np.array([0, 3]))
    assert np.array_equal(drawn.data, abs(P))
    assert drawn.limits == (0, 3)
    assert Drawn(X, 0, Z, abs(P).astype(int)).limits == (0, 4)
    assert np.array_equal(Drawn(X, 0, Z, abs(P).astype(int)).data, abs(P).astype(int))


def test_the_shapes_of_grid_and_of_the_plane() -> None:
    p = pf.grid(X, 0, Z, pf.Piston(1e-3, 2e-3), 4000)
    assert p.shape == (3, 1, 2)
    assert np.array_equal(Drawn(X, 0, Z, p).data, abs(p[:, 0]))
    assert np.array_equal(Drawn(X, 0, Z, p[:, 0]).data, abs(p[:, 0]))


def test_descending_axes_keep_their_places() -> None:
    drawn = Drawn(X[::-1], 0, Z, P)
    assert np.array_equal(drawn.data, abs(P))
    assert drawn.image.get_extent() == pytest.approx([0.5, 2.5, 1.5, -1.5])


def test_the_current_axes_are_the_default() -> None:
    _, axes = plt.subplots(1, 2)
    plt.sca(axes[0])
    assert pf.plot(X, 0, Z, P).axes is axes[0]
    assert pf.plot(X, 0, Z, P, ax=axes[1]).axes is axes[1]


def test_a_picture_replaces_the_one_before() -> None:
    figure = plt.figure()
    first = pf.plot(X, 0, Z, P).axes.get_position().bounds
    image = pf.plot(X, 0, Z, 2 * P, "dB")
    assert image.axes.get_images() == [image]
    assert image.colorbar is not None
    assert figure.axes == [image.axes, image.colorbar.ax]
    assert image.axes.get_position().bounds == first


def test_masked_pressures_have_no_colour() -> None:
    masked = np.ma.masked_array(P, np.zeros(P.shape, bool))
    masked[1, 1] = np.ma.masked
    assert np.argwhere(np.isnan(Drawn(X, 0, Z, masked).data)).tolist() == [[1, 1]]


def test_the_arguments_are_not_changed() -> None:
    x, z, p = X.copy(), Z.copy(), P.copy()
    for quantity in ("linear", "dB", "phase"):
        Drawn(x, 0, z, p, quantity, unit="Pa")
    assert np.array_equal(x, X)
    assert np.array_equal(z, Z)
    assert np.array_equal(p, P)


ERRORS: list[tuple[tuple[Any, ...], dict[str, Any], str]] = [
    (
        ([-1, 0, 1], 0, [1, 2], P),
        {},
        "x, y and z must be in metres, but reach 2. If they are in millimetres, add axes='mm'",
    ),
    ((X, -11, Z, P), {}, "x, y and z must be in metres, but reach 11"),
    ((X, 0, Z, P), {"axes": "inch"}, "axes must be 'm', 'cm', 'mm', 'um' or 'wavelengths'"),
    (([1, 2, 4], 0, [1, 2], P), {}, "must be evenly spaced, and exactly one"),
    (([1, 1, 1], 0, [1, 2], P), {}, "must be evenly spaced, and exactly one"),
    (([1, np.nan, 2], 0, [1, 2], P), {}, "must be evenly spaced, and exactly one"),
    ((X, [], Z, P), {}, "must be evenly spaced, and exactly one"),
    ((Z, Z, Z, np.ones((2, 2, 2))), {}, "must be evenly spaced, and exactly one"),
    ((1, 0, 1, 1), {}, "must be evenly spaced, and exactly one"),
    ((X, 0, [1j, 2j], P), {}, "z must be real numbers"),
    ((X, 0, [[1], [1, 2]], P), {}, "z must be "),
    ((X, 0, Z, P.T), {}, "p must have the shape that grid returns"),
    ((X, 0, Z, 1), {}, "p must have the shape that grid returns"),
    ((X, 0, Z, [[1, 2], [3, 4], [5]]), {}, "p must be "),
    ((X, 0, Z, np.full((3, 2), "1")), {}, "p must be "),
    ((X, 0, Z, np.full((3, 2), None)), {}, "p must be "),
    ((X, 0, Z, P, "loud"), {}, "quantity must be 'linear', 'dB' or 'phase'"),
    ((X, 0, Z, P, None), {}, "quantity must be 'linear', 'dB' or 'phase'"),
    ((X, 0, Z, P, ["dB"]), {}, "quantity must be 'linear', 'dB' or 'phase'"),
    ((X, 0, Z, P), {"ax": plt.Figure()}, "ax must be the axes of a figure"),
    *(
        ((X, 0, Z, P, "dB", limits), {}, "limits must be two finite numbers in ascending order")
        for limits in [
            (-np.inf, 0),
            (0, -40),
            (0, 0),
            (0, np.nan),
            (0,),
            (0, 1, 2),
            3,
            "ab",
            ("a", "b"),
            (0, 1j),
            [[0, 1]],
        ]
    ),
]


@pytest.mark.parametrize(("arguments", "options", "message"), ERRORS)
def test_errors(arguments: tuple[Any, ...], options: dict[str, Any], message: str) -> None:
    with pytest.raises(ValueError, match=message):
        pf.plot(*arguments, **{"ax": plt.figure().gca(), **options})


def test_importing_the_package_does_not_import_matplotlib() -> None:
    program = "import sys, pistonfield; sys.exit('matplotlib' in sys.modules)"
    subprocess.run([sys.executable, "-c", program], check=True)
