"""A user's code, for type checkers: what each call returns, and which calls are errors."""

from __future__ import annotations

from collections.abc import Iterator
from typing import TYPE_CHECKING

import numpy as np
from numpy.typing import NDArray

import pistonfield as pf

if TYPE_CHECKING:
    from matplotlib.image import AxesImage
    from typing_extensions import assert_type

    def pistons() -> Iterator[pf.Piston]:
        yield pf.Piston(1, 2.5, (0, 0, 1), np.eye(3), weight=1j)

    piston = pf.Piston(5, 7)
    points = np.zeros((3, 4, 3), np.float32)
    assert_type(pf.field(points, piston, 1), NDArray[np.complex128])
    assert_type(pf.field([(0, 0, 1)], [piston], 1.0, tolerance=1e-3), NDArray[np.complex128])
    assert_type(pf.field(points, pistons(), 1, full_output=True), tuple[NDArray[np.complex128], pf.Used])
    assert_type(pf.field(points, piston, 1 - 0.1j), NDArray[np.complex128])
    assert_type(pf.grid(0, [1.0], np.arange(3), (piston,), 1, order=10), NDArray[np.complex128])
    assert_type(pf.lensed(piston, 5, 1 - 0.1j, tolerance=1e-2), list[pf.Piston])
    p, used = pf.grid(0, 0, 1, piston, 1, progress=print, full_output=True)
    assert_type(used.orders, tuple[int, int])
    assert_type(used.bound, float)
    assert_type(pf.order(points, piston, 1, 1e-3), tuple[int, float])
    assert_type(pf.rule(3), tuple[NDArray[np.float64], NDArray[np.float64]])
    assert_type(pf.plot(0, [0, 1], [0, 1], p, "dB", (-30, 0), unit="Pa"), AxesImage)
    burst = pf.tone_burst(5e6, 2, 100e6)
    assert_type(burst, pf.Excitation)
    assert_type(pf.pulse(points, piston, 1540, burst), tuple[NDArray[np.float64], NDArray[np.float64]])
    assert_type(
        pf.pulse(points, [piston], pf.Medium(1540, 0.5), burst, delays=[0.0], full_output=True),
        tuple[NDArray[np.float64], NDArray[np.float64], pf.PulseUsed],
    )
    assert_type(
        pf.echo(points, piston, 1540, burst, receivers=[piston]), tuple[NDArray[np.float64], NDArray[np.float64]]
    )
    assert_type(pf.focus_delays(piston, (0, 0, 1), 1540), NDArray[np.float64])
    assert_type(piston.width, float)
    assert_type(piston.centre, tuple[float, float, float])

    # Type checkers report an ignored error that there is not.
    pf.field(points, [[1, 2]], 1)  # type: ignore[list-item]  # pyright: ignore[reportCallIssue, reportArgumentType]
    pf.field(points, piston)  # type: ignore[call-overload]  # pyright: ignore[reportCallIssue]
    pf.plot(0, 0, 1, p, "loud")  # type: ignore[arg-type]  # pyright: ignore[reportArgumentType]
    pf.pulse(points, piston, 1540, [0, 1])  # type: ignore[call-overload]  # pyright: ignore[reportCallIssue, reportArgumentType]
    piston.width = 2  # type: ignore[misc]  # pyright: ignore[reportAttributeAccessIssue]
