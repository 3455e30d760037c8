"""The C++ library: the functions of python/core.cpp and pulse.cpp, for arguments whose types and shapes are checked."""

from __future__ import annotations

import ctypes
import sys
from collections.abc import Sequence
from ctypes import POINTER, c_bool, c_char_p, c_double, c_int, c_size_t, c_uint, c_void_p
from pathlib import Path
from typing import Any, Callable, Optional

import numpy as np
from numpy.typing import NDArray

from ._error import FieldError

Reals = NDArray[np.float64]  # aligned, in C order
Pressures = NDArray[np.complex128]
Progress = Optional[Callable[[float], object]]

_SECONDS_BETWEEN_CALLS = 0.05


class _Answer(ctypes.Structure):
    _fields_ = (
        ("error", c_char_p),
        ("numbers", c_void_p),
        ("count", c_size_t),
        ("used", c_double * 6),
    )


def _function(name: str, result: Any, *arguments: Any) -> Any:
    function = getattr(_library, f"pistonfield_{name}")
    function.restype, function.argtypes = result, arguments
    return function


_suffix = {"win32": "dll", "darwin": "dylib"}.get(sys.platform, "so")
_file = Path(__file__).parent / "lib" / f"libpistonfield.{_suffix}"
if not _file.exists():
    raise ImportError(
        f"pistonfield is not built: there is no {_file}. Install it by 'pip install .' in the folder of the "
        "sources, and start Python in another folder."
    )
_library = ctypes.CDLL(str(_file))

_work = POINTER(_Answer)
_points = _pistons = _axis = c_void_p, c_size_t
_complex = c_double, c_double
_new = _function("new", _work)
_delete = _function("delete", None, _work)
_stop = _function("stop", None, _work)
_wait = _function("wait", c_bool, _work, c_double, POINTER(c_double))
_at = _function("at", c_bool, _work, *_points, *_pistons, *_complex, c_double, c_int)
_on = _function("on", c_bool, _work, *_axis, *_axis, *_axis, *_pistons, *_complex, c_double, c_int)
_order = _function("order", c_bool, _work, *_points, *_pistons, *_complex, c_double)
_linear_array = _function("linear_array", None, _work, c_size_t, *[c_double] * 3)
_matrix_array = _function("matrix_array", None, _work, c_size_t, c_size_t, *[c_double] * 4)
_convex_array = _function("convex_array", None, _work, c_size_t, *[c_double] * 4)
_apodization = _function("apodization", None, _work, c_char_p, POINTER(c_size_t), c_size_t, POINTER(c_double))
_steered = _function("steered", None, _work, *_pistons, c_void_p, *_complex)
_focused = _function("focused", None, _work, *_pistons, c_void_p, *_complex)
_lensed = _function("lensed", None, _work, *_pistons, c_double, *_complex, c_double)
_beams = _function("beams", None, _work, *_axis, c_void_p, c_size_t, c_double)
_rule = _function("rule", None, _work, c_int)
_excitation = *_axis, c_double, c_double
_when = c_double, *_axis
_pulse = _function("pulse", c_bool, _work, *_pistons, c_void_p, c_void_p, *_excitation, *_points, *_when, c_double)
_echo = _function(
    "echo",
    c_bool,
    _work,
    *(*_pistons, c_void_p),
    *(*_pistons, c_void_p),
    c_void_p,
    *_excitation,
    *_points,
    *_when,
    c_double,
)
_tone_burst = _function("tone_burst", None, _work, *[c_double] * 3, c_char_p)
_gauss_pulse = _function("gauss_pulse", None, _work, *[c_double] * 3)
_steer_delays = _function("steer_delays", None, _work, *_pistons, c_void_p, c_double)
_focus_delays = _function("focus_delays", None, _work, *_pistons, c_void_p, c_double)


class _Work:
    """A call of a function of the library, which frees the result when no array refers to it."""

    def __init__(self, *kept: Reals | None) -> None:
        self._kept = kept  # until the library has read them
        self._pointer = _new()
        if not self._pointer:
            raise MemoryError

    def __del__(self, delete: Callable[[Any], None] = _delete) -> None:
        delete(self._pointer)

    def run(self, function: Callable[..., Any], *arguments: Any, progress: Progress = None) -> _Answer:
        """Returns the answer. An exception that is raised meanwhile, here or in `progress`, ends the work."""
        fraction = c_double()
        try:
            has_ended = function(self._pointer, *arguments)
            while has_ended is False:
                has_ended = _wait(self._pointer, _SECONDS_BETWEEN_CALLS, fraction)
                # What is left after the last piece of work is short: 1 is reported once, at the end.
                if progress is not None and not has_ended and fraction.value < 1:
                    progress(fraction.value)
        except BaseException:
            _stop(self._pointer)
            raise
        self._kept = ()
        answer: _Answer = self._pointer.contents
        if answer.error is not None:
            raise FieldError(answer.error.decode())
        if progress is not None:
            progress(1.0)
        return answer

    def array(self, dtype: type) -> NDArray[Any]:
        """The numbers, without a copy."""
        answer = self._pointer.contents
        kind = np.dtype(dtype)
        if not answer.count:
            return np.empty(0, kind)
        self.__array_interface__ = {
            "version": 3,
            "typestr": kind.str,
            "data": (answer.numbers, False),
            "shape": (answer.count * 8 // kind.itemsize,),
        }
        return np.asarray(self)


def _array(values: Reals | None) -> tuple[int | None, int]:
    """The arguments of the library for points, pistons, an axis or none."""
    return (None, 0) if values is None else (values.ctypes.data, len(values))


def _parts(number: complex) -> tuple[float, float]:
    """The arguments of the library for a complex number."""
    return number.real, number.imag


def _numbers(function: Callable[..., Any], *arguments: Any) -> Reals:
    work = _Work()
    work.run(function, *arguments)
    return work.array(np.float64)


def _pressures(
    work: _Work, function: Callable[..., Any], *arguments: Any, progress: Progress
) -> tuple[Pressures, list[float]]:
    answer = work.run(function, *arguments, progress=progress)
    return work.array(np.complex128), list(answer.used)


def pressures_at(
    points: Reals, pistons: Reals, k: complex, tolerance: float, order: int, progress: Progress
) -> tuple[Pressures, list[float]]:
    """The pressures and, of what was used: the least and the most order, single, double, nodes and bound."""
    work = _Work(points, pistons)
    return _pressures(work, _at, *_array(points), *_array(pistons), *_parts(k), tolerance, order, progress=progress)


def pressures_on(
    axes: Sequence[Reals], pistons: Reals, k: complex, tolerance: float, order: int, progress: Progress
) -> tuple[Pressures, list[float]]:
    """The same on a grid, the first axis varying fastest."""
    work = _Work(*axes, pistons)
    grid = [number for axis in axes for number in _array(axis)]
    return _pressures(work, _on, *grid, *_array(pistons), *_parts(k), tolerance, order, progress=progress)


def order_for(points: Reals, pistons: Reals, k: complex, tolerance: float) -> tuple[int, float]:
    """The order and its error."""
    work = _Work(points, pistons)
    work.run(_order, *_array(points), *_array(pistons), *_parts(k), tolerance)
    order, error = work.array(np.float64).tolist()
    return int(order), error


def _pistons_of(function: Callable[..., Any], *arguments: Any) -> Reals:
    """The pistons, 16 numbers each."""
    return _numbers(function, *arguments).reshape(-1, 16)


def linear_array(count: int, pitch: float, width: float, height: float) -> Reals:
    return _pistons_of(_linear_array, count, pitch, width, height)


def matrix_array(nx: int, ny: int, pitch_x: float, pitch_y: float, width: float, height: float) -> Reals:
    return _pistons_of(_matrix_array, nx, ny, pitch_x, pitch_y, width, height)


def convex_array(count: int, pitch: float, radius: float, width: float, height: float) -> Reals:
    return _pistons_of(_convex_array, count, pitch, radius, width, height)


def steered(pistons: Reals, direction: Reals, k: complex) -> Reals:
    return _pistons_of(_steered, *_array(pistons), direction.ctypes.data, *_parts(k))


def focused(pistons: Reals, focus: Reals, k: complex) -> Reals:
    return _pistons_of(_focused, *_array(pistons), focus.ctypes.data, *_parts(k))


def lensed(pistons: Reals, focus: float, k: complex, tolerance: float) -> Reals:
    return _pistons_of(_lensed, *_array(pistons), focus, *_parts(k), tolerance)


def apodization(name: str, counts: Sequence[int], parameter: float | None) -> Reals:
    """The weights."""
    numbers = (c_size_t * len(counts))(*counts)
    given = None if parameter is None else c_double(parameter)
    return _numbers(_apodization, name.encode(), numbers, len(counts), given)


def beams(x: Reals, p: Pressures, drop: float) -> Reals:
    """The beams of the rows of p, five numbers each."""
    return _numbers(_beams, *_array(x), p.ctypes.data, len(p), drop).reshape(-1, 5)


def rule(order: int) -> tuple[Reals, Reals]:
    """The nodes and the weights."""
    numbers = _numbers(_rule, order)
    return numbers[:order], numbers[order:]


Delayed = tuple[Reals, Reals]  # pistons and their delays


def against_time(
    apertures: Sequence[Delayed],
    medium: Reals,
    excitation: Any,
    points: Reals,
    rate: float,
    times: Reals | None,
    tolerance: float,
    progress: Progress,
) -> tuple[Reals, list[float]]:
    """The pressures of one aperture, or the echoes from one to another, those of a point side by side; and the
    start, rate and count of the times, bound, nodes and frequencies."""
    function = _pulse if len(apertures) == 1 else _echo
    work = _Work(*(values for aperture in apertures for values in aperture), medium, excitation.samples, points, times)
    sent = [number for rows, delays in apertures for number in (*_array(rows), delays.ctypes.data)]
    velocity = *_array(excitation.samples), excitation.rate, excitation.start
    asked = *_array(points), rate, *_array(times), tolerance
    answer = work.run(function, *sent, medium.ctypes.data, *velocity, *asked, progress=progress)
    return work.array(np.float64), list(answer.used)


def tone_burst(frequency: float, cycles: float, rate: float, window: str) -> Reals:
    """The start, the rate and the samples."""
    return _numbers(_tone_burst, frequency, cycles, rate, window.encode())


def gauss_pulse(frequency: float, bandwidth: float, rate: float) -> Reals:
    """The start, the rate and the samples."""
    return _numbers(_gauss_pulse, frequency, bandwidth, rate)


def steer_delays(pistons: Reals, direction: Reals, speed: float) -> Reals:
    return _numbers(_steer_delays, *_array(pistons), direction.ctypes.data, speed)


def focus_delays(pistons: Reals, focus: Reals, speed: float) -> Reals:
    return _numbers(_focus_delays, *_array(pistons), focus.ctypes.data, speed)


def info() -> dict[str, str | int]:
    """Facts about the library."""
    texts = ("version", "revision", "compiler", "instructions")
    facts: dict[str, str | int] = {name: _function(name, c_char_p)().decode() for name in texts}
    facts["threads"] = _function("threads", c_uint)()
    return facts
