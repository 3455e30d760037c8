"""Pulses: pressures and echoes against time."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Literal, Union, overload

import numpy as np
from numpy.typing import ArrayLike, NDArray

from . import _core
from ._core import Progress, Reals
from ._field import progress_function
from ._pistons import Pistons, piston_rows, point_rows, real_array, real_number


@dataclass(frozen=True, init=False, eq=False)
class Excitation:
    """The velocity of pistons against time, as evenly spaced samples.

    Between the samples it is the cubic spline through them, which is 0 beyond two steps from the first and the
    last: so they should begin and end near 0.

    Parameters
    ----------
    samples : (N,) array_like of float
        One or more, finite.
    rate : float
        Samples per unit of time, positive.
    start : float
        The time of the first sample.

    Attributes
    ----------
    samples : ndarray of float64
        A copy, which cannot be written to.
    rate, start : float

    Raises
    ------
    ValueError
        If an argument has another shape or type. The values are checked when a pressure is computed.

    See Also
    --------
    tone_burst, gauss_pulse

    Examples
    --------
    >>> import numpy as np
    >>> import pistonfield as pf
    >>> excitation = pf.Excitation(np.sin(np.linspace(0, np.pi, 51)) ** 2, rate=100e6)
    """

    samples: NDArray[np.float64]
    rate: float
    start: float

    def __init__(self, samples: ArrayLike, rate: float, start: float = 0) -> None:
        copy = real_array("samples", samples, (None,)).copy()
        copy.flags.writeable = False
        object.__setattr__(self, "samples", copy)  # the class is frozen
        object.__setattr__(self, "rate", real_number("rate", rate))
        object.__setattr__(self, "start", real_number("start", start))


@dataclass(frozen=True)
class Medium:
    """A fluid or tissue in which pulses travel.

    Parameters
    ----------
    speed : float
        Of sound, positive. Units are metres and seconds if the medium attenuates; otherwise any.
    attenuation : float
        In dB/(cm MHz^exponent), at least 0.
    exponent : float
        How attenuation rises with frequency, from 0 to 3: about 1 for soft tissue, 2 for water.
    reference : float
        The frequency in Hz at which waves have the speed above; at others it differs, as causality requires. If
        it is 0, the speed is the same for all frequencies.

    Raises
    ------
    ValueError
        If an argument is not a number. The values are checked when a pressure is computed.

    Examples
    --------
    >>> import pistonfield as pf
    >>> pf.Medium(1540, attenuation=0.5)
    Medium(speed=1540.0, attenuation=0.5, exponent=1.0, reference=0.0)
    """

    speed: float
    attenuation: float = 0
    exponent: float = 1
    reference: float = 0

    def __post_init__(self) -> None:
        for name in ("speed", "attenuation", "exponent", "reference"):
            object.__setattr__(self, name, real_number(name, getattr(self, name)))  # the class is frozen


@dataclass(frozen=True)
class PulseUsed:
    """What the computation of a pulse or an echo used.

    Parameters
    ----------
    bound : float
        An upper bound of the absolute error of a number of the result.
    nodes : float
        How many values of integrands were computed.
    frequencies : int
        How many frequencies were computed; 0 for a pulse without attenuation, which is summed in time. An echo is
        always a sum of frequencies.
    """

    bound: float
    nodes: float
    frequencies: int


Mediums = Union[Medium, float]


def tone_burst(frequency: float, cycles: float, rate: float, window: str = "hann") -> Excitation:
    """Some cycles of a sine under a window: ``w(t) sin(2 pi frequency t)`` for t from 0 to cycles / frequency.

    Parameters
    ----------
    frequency : float
        Positive.
    cycles : float
        How many, positive, at most 1e4; 2.5 are two and a half.
    rate : float
        Samples per unit of time, from 8 to 1e4 times the frequency; 20 times or more is common.
    window : {'hann', 'rectangular', 'hamming', 'tukey', 'gauss'}
        As of `apodization`. 'hann' is ``w(t) = sin(pi frequency t / cycles)**2``.

    Returns
    -------
    Excitation

    Raises
    ------
    ValueError
        If an argument is not in its range; the message names it.

    Examples
    --------
    Two cycles at 5 MHz:

    >>> import pistonfield as pf
    >>> excitation = pf.tone_burst(5e6, 2, 100e6)
    >>> len(excitation.samples)
    41
    """
    if not isinstance(window, str) or "\0" in window:
        raise ValueError("window must be the name of a window.")
    f, count = real_number("frequency", frequency), real_number("cycles", cycles)
    return _excitation(_core.tone_burst(f, count, real_number("rate", rate), window))


def gauss_pulse(frequency: float, bandwidth: float, rate: float) -> Excitation:
    """A cosine under a Gaussian: ``cos(2 pi f t) exp(-(pi f t bandwidth)**2 / (4 log(2)))``, with its middle at 0.

    Its spectrum has dropped by 6 dB at f (1 - bandwidth / 2) and f (1 + bandwidth / 2), for a bandwidth of up to 1;
    beyond it, negative frequencies reach into the band. It ends where the Gaussian has dropped by 100 dB.

    Parameters
    ----------
    frequency : float
        The centre frequency f, positive.
    bandwidth : float
        At -6 dB, as a part of f: from 0.01 to 2.
    rate : float
        Samples per unit of time, from 8 to 1e4 times the frequency; 20 times or more is common.

    Returns
    -------
    Excitation

    Raises
    ------
    ValueError
        If an argument is not in its range; the message names it.

    Examples
    --------
    5 MHz with a bandwidth of 60 %:

    >>> import pistonfield as pf
    >>> excitation = pf.gauss_pulse(5e6, 0.6, 100e6)
    >>> float(excitation.samples.max())
    1.0
    """
    f, width = real_number("frequency", frequency), real_number("bandwidth", bandwidth)
    return _excitation(_core.gauss_pulse(f, width, real_number("rate", rate)))


def steer_delays(pistons: Pistons, direction: ArrayLike, speed: float) -> Reals:
    """The delays that send a plane wave in a direction: ``c.d / (|d| speed)`` for the centre c and the direction d.

    Parameters
    ----------
    pistons : Piston or sequence of Piston
    direction : (3,) array_like of float
        Not 0; its length does not matter.
    speed : float
        Of sound, positive.

    Returns
    -------
    (M,) ndarray of float64
        One for each piston. Subtract the least if none may be negative.

    Raises
    ------
    ValueError
        If an argument is not in its range; the message names it.

    Examples
    --------
    >>> import numpy as np
    >>> import pistonfield as pf
    >>> array = pf.linear_array(3, 0.3e-3, 0.27e-3, 5e-3)
    >>> delays = pf.steer_delays(array, (1, 0, 0), 1500)
    >>> np.round(delays * 1e9).tolist()
    [-200.0, 0.0, 200.0]
    """
    towards = real_array("direction", direction, (3,))
    return _core.steer_delays(piston_rows(pistons), towards, real_number("speed", speed))


def focus_delays(pistons: Pistons, focus: ArrayLike, speed: float) -> Reals:
    """The delays with which the waves from the pistons' centres arrive at a point at one time, ``|f| / speed``.

    They are ``(|f| - |f - c|) / speed``, with the centre c and the focus f.

    Parameters
    ----------
    pistons : Piston or sequence of Piston
    focus : (3,) array_like of float
    speed : float
        Of sound, positive.

    Returns
    -------
    (M,) ndarray of float64
        One for each piston. Subtract the least if none may be negative.

    Raises
    ------
    ValueError
        If an argument is not in its range; the message names it.

    Examples
    --------
    >>> import numpy as np
    >>> import pistonfield as pf
    >>> array = pf.linear_array(3, 3e-3, 2.7e-3, 5e-3)
    >>> delays = pf.focus_delays(array, (0, 0, 4e-3), 1500)
    >>> np.round(delays * 1e9).tolist()
    [-667.0, 0.0, -667.0]
    """
    at = real_array("focus", focus, (3,))
    return _core.focus_delays(piston_rows(pistons), at, real_number("speed", speed))


@overload
def pulse(
    points: ArrayLike,
    pistons: Pistons,
    medium: Mediums,
    excitation: Excitation,
    *,
    delays: ArrayLike | None = ...,
    times: ArrayLike | None = ...,
    rate: float | None = ...,
    tolerance: float = ...,
    progress: Progress = ...,
    full_output: Literal[False] = ...,
) -> tuple[Reals, Reals]: ...
@overload
def pulse(
    points: ArrayLike,
    pistons: Pistons,
    medium: Mediums,
    excitation: Excitation,
    *,
    delays: ArrayLike | None = ...,
    times: ArrayLike | None = ...,
    rate: float | None = ...,
    tolerance: float = ...,
    progress: Progress = ...,
    full_output: Literal[True],
) -> tuple[Reals, Reals, PulseUsed]: ...
def pulse(
    points: ArrayLike,
    pistons: Pistons,
    medium: Mediums,
    excitation: Excitation,
    *,
    delays: ArrayLike | None = None,
    times: ArrayLike | None = None,
    rate: float | None = None,
    tolerance: float = 1e-4,
    progress: Progress = None,
    full_output: bool = False,
) -> tuple[Reals, Reals] | tuple[Reals, Reals, PulseUsed]:
    """Pressure of pistons against time, for a pulse.

    Adds the pressures of M pistons that move with the velocity v(t) of the excitation, each after its own delay::

        p(r, t) = sum over m of  w_m / (2 pi c)  integral over piston m of  v'(t - d_m - |r - r'| / c) / |r - r'|  dS

    with the weight w_m, the delay d_m and the speed of sound c. The pressure is without the factor rho c, so that 1
    is the pressure of a plane wave with the velocity 1: multiply it by the density and the speed for pascals. In a
    medium that attenuates, it is the sum of the frequencies of v, each with its own attenuation.

    Parameters
    ----------
    points : (..., 3) array_like of float
        x, y, z of each point.
    pistons : Piston or iterable of Piston
        Their weights must be real.
    medium : Medium or float
        The medium, or its speed of sound.
    excitation : Excitation
        The velocity v(t).
    delays : (M,) array_like of float, optional
        How much later than the excitation each piston moves. By default none does.
    times : (T,) array_like of float, optional
        The times of the result, evenly spaced, ascending. By default from the first wave at any of the points to
        the last, at the speed of the medium. Where it attenuates, a little of the pulse may lie before and after.
    rate : float, optional
        How many times per unit of time the result has, in place of times. By default that of the excitation.
    tolerance : float
        The largest error of a pressure, relative to the peak of its magnitude at the points of this call at any
        time: from 1e-6 to below 1.
    progress : callable, optional
        As for `field`.
    full_output : bool
        Whether to return also what was used.

    Returns
    -------
    p : (..., T) ndarray of float64
        The pressures, with time along the last axis; NaN at points with a coordinate that is infinite or NaN.
    t : (T,) ndarray of float64
        The times.
    used : PulseUsed
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
    tone_burst, gauss_pulse, focus_delays, steer_delays, peaks

    Notes
    -----
    The work is done on all cores, without the interpreter's lock. Ctrl-C ends it.

    Examples
    --------
    Two cycles at 5 MHz from 64 elements, focused at 30 mm:

    >>> import pistonfield as pf
    >>> array = pf.linear_array(64, 0.3e-3, 0.27e-3, 5e-3)
    >>> focus = (0, 0, 30e-3)
    >>> delays = pf.focus_delays(array, focus, 1540)
    >>> p, t = pf.pulse(focus, array, 1540, pf.tone_burst(5e6, 2, 100e6), delays=delays)
    >>> p.shape == t.shape
    True
    """
    aperture = _aperture("delays", pistons, delays)
    return _against_time([aperture], points, medium, excitation, times, rate, tolerance, progress, full_output)


@overload
def echo(
    points: ArrayLike,
    pistons: Pistons,
    medium: Mediums,
    excitation: Excitation,
    *,
    delays: ArrayLike | None = ...,
    receivers: Pistons | None = ...,
    receive_delays: ArrayLike | None = ...,
    times: ArrayLike | None = ...,
    rate: float | None = ...,
    tolerance: float = ...,
    progress: Progress = ...,
    full_output: Literal[False] = ...,
) -> tuple[Reals, Reals]: ...
@overload
def echo(
    points: ArrayLike,
    pistons: Pistons,
    medium: Mediums,
    excitation: Excitation,
    *,
    delays: ArrayLike | None = ...,
    receivers: Pistons | None = ...,
    receive_delays: ArrayLike | None = ...,
    times: ArrayLike | None = ...,
    rate: float | None = ...,
    tolerance: float = ...,
    progress: Progress = ...,
    full_output: Literal[True],
) -> tuple[Reals, Reals, PulseUsed]: ...
def echo(
    points: ArrayLike,
    pistons: Pistons,
    medium: Mediums,
    excitation: Excitation,
    *,
    delays: ArrayLike | None = None,
    receivers: Pistons | None = None,
    receive_delays: ArrayLike | None = None,
    times: ArrayLike | None = None,
    rate: float | None = None,
    tolerance: float = 1e-4,
    progress: Progress = None,
    full_output: bool = False,
) -> tuple[Reals, Reals] | tuple[Reals, Reals, PulseUsed]:
    """What pistons receive from point scatterers against time, for a pulse.

    With the spectrum V of the excitation, and the pressures P that `field` gives for the pistons that transmit and
    for those that receive, each with the phases of its delays, the echo of a scatterer is::

        e(t) = 1 / (2 pi)  integral of  V(w) i P_transmit(w) i P_receive(w) exp(i w t)  dw

    It is what the scatterer would radiate to the receivers if these transmitted the pressure at the scatterer. The
    receivers add what arrives, by their weights, each later by its delay. Scatterers do not reach each other: a
    signal of many is the sum of their echoes times their strengths. In pulse-echo imaging with one array, pass the
    same delays for both directions: an echo from the focus then arrives at all elements' sum at one time.

    Parameters
    ----------
    points : (..., 3) array_like of float
        x, y, z of each scatterer.
    pistons : Piston or iterable of Piston
        Those that transmit. Their weights must be real.
    medium : Medium or float
        The medium, or its speed of sound.
    excitation : Excitation
        The velocity of the pistons.
    delays : (M,) array_like of float, optional
        How much later than the excitation each piston moves. By default none does.
    receivers : Piston or iterable of Piston, optional
        Those that receive. By default those that transmit, with the same delays.
    receive_delays : (K,) array_like of float, optional
        How much later each receiver is heard. By default, that of `delays` if there are no receivers, or else 0.
    times, rate, tolerance, progress, full_output
        As for `pulse`.

    Returns
    -------
    e : (..., T) ndarray of float64
        The echoes, with time along the last axis; NaN for scatterers with a coordinate that is infinite or NaN.
    t : (T,) ndarray of float64
        The times.
    used : PulseUsed
        Only with full_output.

    Raises
    ------
    ValueError
        As for `pulse`.
    FieldError
        As for `pulse`.

    Examples
    --------
    A scatterer in the focus of 64 elements:

    >>> import pistonfield as pf
    >>> array = pf.linear_array(64, 0.3e-3, 0.27e-3, 5e-3)
    >>> focus = (0, 0, 30e-3)
    >>> delays = pf.focus_delays(array, focus, 1540)
    >>> e, t = pf.echo(focus, array, 1540, pf.gauss_pulse(5e6, 0.6, 100e6), delays=delays)
    >>> round(float(t[abs(e).argmax()]) * 1e6)
    39
    """
    aperture = _aperture("delays", pistons, delays)
    if receivers is not None:
        receiving = _aperture("receive_delays", receivers, receive_delays)
    elif receive_delays is not None:
        receiving = aperture[0], _delays("receive_delays", receive_delays, len(aperture[0]))
    else:
        receiving = aperture
    apertures = [aperture, receiving]
    return _against_time(apertures, points, medium, excitation, times, rate, tolerance, progress, full_output)


def _against_time(
    apertures: list[_core.Delayed],
    points: ArrayLike,
    medium: Mediums,
    excitation: Excitation,
    times: ArrayLike | None,
    rate: float | None,
    tolerance: float,
    progress: Progress,
    full_output: bool,
) -> tuple[Reals, Reals] | tuple[Reals, Reals, PulseUsed]:
    where, shape = point_rows(points)
    sent = _sent(medium, excitation)
    shown, listed = _when(times, rate, excitation)
    asked = *sent, where, shown, listed, real_number("tolerance", tolerance)
    values, facts = _core.against_time(apertures, *asked, progress_function(progress))
    start, shown, count, bound, nodes, frequencies = facts
    t = start + np.arange(count) / shown if listed is None else listed
    result = values.reshape(*shape, len(t))
    return (result, t, PulseUsed(bound, nodes, int(frequencies))) if full_output else (result, t)


def _aperture(name: str, pistons: Pistons, delays: ArrayLike | None) -> _core.Delayed:
    rows = piston_rows(pistons)
    return rows, _delays(name, delays, len(rows))


def _excitation(numbers: Reals) -> Excitation:
    start, rate = numbers[:2].tolist()
    return Excitation(numbers[2:], rate, start)


def _delays(name: str, delays: ArrayLike | None, count: int) -> Reals:
    if delays is None:
        return np.zeros(count)
    return real_array(name, delays, (count,))


def _sent(medium: Mediums, excitation: Excitation) -> tuple[Reals, Excitation]:
    """The medium as four numbers, and the excitation."""
    if not isinstance(medium, Medium):
        medium = Medium(real_number("medium", medium))
    if not isinstance(excitation, Excitation):
        raise ValueError("excitation must be an Excitation, as tone_burst returns it.")
    return np.array([medium.speed, medium.attenuation, medium.exponent, medium.reference]), excitation


def _when(times: ArrayLike | None, rate: float | None, excitation: Excitation) -> tuple[float, Reals | None]:
    if times is None:
        return (excitation.rate if rate is None else real_number("rate", rate)), None
    if rate is not None:
        raise ValueError("rate must be None if there are times.")
    return excitation.rate, real_array("times", times, (None,))
