"""Pulses, against closed forms and the fields of their frequencies."""

from __future__ import annotations

import dataclasses
import time
from typing import Any

import numpy as np
import pytest
from numpy.typing import NDArray

import pistonfield as pf

C, F = 1500.0, 1e6
BURST = pf.tone_burst(F, 2, 40 * F)
PISTON = pf.Piston(4e-3, 6e-3)
ROW = pf.weighted(pf.linear_array(8, 0.75e-3, 0.7e-3, 6e-3), [1, 2, 3, -1, 1, 1, 0, 0.5])
POINTS = np.array([[-6e-3, 0, 5e-3], [0, 2e-3, 1e-3], [1e-3, -3e-3, 20e-3], [4e-3, 1e-3, 60e-3]])


def at_frequency(values: NDArray[np.float64], times: NDArray[np.float64], f: float) -> Any:
    """The Fourier transform along the last axis."""
    return values @ np.exp(-2j * np.pi * f * times) * (times[1] - times[0])


def times_of(excitation: pf.Excitation) -> NDArray[np.float64]:
    times: NDArray[np.float64] = excitation.start + np.arange(len(excitation.samples)) / excitation.rate
    return times


@pytest.mark.parametrize("loss", [0, 2])
def test_each_frequency_is_that_of_field(loss: float) -> None:
    points = POINTS[2:] if loss else POINTS
    times = np.arange(-400, 6000) / BURST.rate  # with the tails that attenuation adds
    p, t, used = pf.pulse(points, ROW, pf.Medium(C, loss, 1.1), BURST, times=times, full_output=True)
    assert (used.frequencies > 0) == (loss > 0)
    assert 0 < used.bound <= 1e-4 * abs(p).max() * 1.0001
    for f in (0.6 * F, F, 1.3 * F):
        velocity = at_frequency(BURST.samples, times_of(BURST), f)
        k = 2 * np.pi * f / C - 1j * pf.attenuation(loss, f, 1.1)
        expected = 1j * velocity * pf.field(points, ROW, k, tolerance=1e-8)
        assert abs(at_frequency(p, t, f) - expected).max() < 1e-3 * abs(expected).max()


def test_a_plane_wave_has_the_velocity_of_the_piston() -> None:
    t = 0.1 / C + np.arange(len(BURST.samples)) / BURST.rate
    p, times = pf.pulse((0, 0, 0.1), pf.Piston(1, 1), C, BURST, times=t)
    assert p == pytest.approx(BURST.samples, abs=2e-4)
    np.testing.assert_array_equal(times, t)


def test_delays_and_weights() -> None:
    p, t = pf.pulse(POINTS, ROW, C, BURST)
    peak = abs(p).max()
    later, _ = pf.pulse(POINTS, ROW, C, BURST, delays=np.full(8, 3 / BURST.rate), times=t)
    assert later[:, 3:] == pytest.approx(p[:, :-3], abs=2e-4 * peak)
    each = [pf.pulse(POINTS, piston, C, BURST, times=t)[0] for piston in ROW]
    assert sum(each) == pytest.approx(p, abs=1e-3 * peak)


def test_delays_to_steer_and_focus() -> None:
    focus, centres = np.array([6e-3, 0, 8e-3]), np.array([piston.centre for piston in ROW])
    delays = pf.focus_delays(ROW, focus, C)
    expected = (np.linalg.norm(focus) - np.linalg.norm(focus - centres, axis=1)) / C
    assert delays == pytest.approx(expected, abs=1e-15)
    assert pf.steer_delays(ROW, (3, 0, 4), C) == pytest.approx(0.6 * centres[:, 0] / C, abs=1e-18)
    even = pf.linear_array(8, 0.75e-3, 0.7e-3, 6e-3)
    focused, _ = pf.pulse(focus, even, C, BURST, delays=delays)
    assert abs(focused).max() > 1.2 * abs(pf.pulse(focus, even, C, BURST)[0]).max()


@pytest.mark.parametrize("loss", [0, 1])
def test_echoes_are_there_and_back(loss: float) -> None:
    points = POINTS[[0, 2, 3]]
    receiver = pf.Piston(3e-3, 4e-3, (10e-3, 0, 2e-3))
    times = np.arange(-400, 6000) / BURST.rate
    medium = pf.Medium(C, loss)
    e, t = pf.echo(points, ROW, medium, BURST, receivers=receiver, receive_delays=[1e-6], times=times)
    for f in (0.6 * F, F, 1.3 * F):
        velocity = at_frequency(BURST.samples, times_of(BURST), f)
        k = 2 * np.pi * f / C - 1j * pf.attenuation(loss, f)
        there, back = (pf.field(points, pistons, k, tolerance=1e-8) for pistons in (ROW, receiver))
        expected = -velocity * there * back * np.exp(-2j * np.pi * f * 1e-6)
        assert abs(at_frequency(e, t, f) - expected).max() < 1e-3 * abs(expected).max()


def test_receivers_by_default() -> None:
    delays = np.linspace(0, 1e-6, 8)
    e, t = pf.echo(POINTS, ROW, C, BURST, delays=delays)
    same, _ = pf.echo(POINTS, ROW, C, BURST, delays=delays, receivers=ROW, receive_delays=delays)
    np.testing.assert_array_equal(e, same)
    apart, _ = pf.echo(POINTS, ROW, C, BURST, delays=delays, receivers=ROW, times=t)
    only, _, used = pf.echo(POINTS, ROW, C, BURST, receive_delays=delays, times=t, full_output=True)
    assert only == pytest.approx(apart, abs=3e-4 * abs(apart).max())
    assert used.frequencies > 0
    with pytest.raises(ValueError, match=r"receive_delays must have the shape \(1,\)"):
        pf.echo(POINTS, ROW, C, BURST, receivers=PISTON, receive_delays=delays)


def test_shapes_and_times() -> None:
    p, t = pf.pulse(POINTS.reshape(2, 2, 3), PISTON, C, BURST)
    assert p.shape == (2, 2, len(t))
    assert t * BURST.rate == pytest.approx(np.round(t * BURST.rate), abs=1e-9)
    assert p.dtype == t.dtype == np.float64
    one, _ = pf.pulse(POINTS[0], PISTON, C, BURST, times=[t[40]])
    assert one.shape == (1,)
    fine, s = pf.pulse(POINTS[0], PISTON, C, BURST, rate=3 * BURST.rate)
    assert 1 / np.diff(s) == pytest.approx(3 * BURST.rate, rel=1e-6)
    assert fine.shape == s.shape
    none, s = pf.pulse(np.zeros((0, 3)), PISTON, C, BURST, times=t)
    assert none.shape == (0, len(t))
    p, t = pf.pulse([(0, 0, np.inf), (0, 0, 0.01)], PISTON, C, BURST)
    assert np.isnan(p[0]).all()
    assert np.isfinite(p[1]).all()


def test_media_and_excitations_are_values() -> None:
    assert pf.Medium(np.float32(1500)) == pf.Medium(1500.0, 0, 1, 0)
    assert isinstance(pf.Medium(1500).speed, float)
    samples = np.array([0, 1, 0], np.float32)
    excitation = pf.Excitation(samples, 2)
    samples[1] = 5
    assert excitation.samples.tolist() == [0, 1, 0]
    with pytest.raises(ValueError, match="read-only"):
        excitation.samples[0] = 1
    for value in (excitation, pf.Medium(1500)):
        with pytest.raises(dataclasses.FrozenInstanceError):
            value.rate = 3  # type: ignore[union-attr]


@pytest.mark.parametrize("cycles", [0.5, 2, 2.5])
def test_tone_bursts(cycles: float) -> None:
    burst = pf.tone_burst(3, cycles, 90)
    t = times_of(burst)
    assert len(t) == 30 * cycles + 1
    v = np.sin(2 * np.pi * 3 * t) * np.sin(np.pi * 3 * t / cycles) ** 2
    assert burst.samples == pytest.approx(v, abs=1e-14)
    flat = pf.tone_burst(3, cycles, 90, "rectangular").samples
    assert flat[:-1] == pytest.approx(np.sin(2 * np.pi * 3 * t)[:-1], abs=1e-14)


def test_gauss_pulses() -> None:
    pulse = pf.gauss_pulse(5e6, 0.6, 200e6)
    t = times_of(pulse)
    v = np.cos(2 * np.pi * 5e6 * t) * np.exp(-((np.pi * 5e6 * t * 0.6) ** 2) / (4 * np.log(2)))
    assert pulse.samples == pytest.approx(v, abs=1e-12)
    spectrum = [abs(at_frequency(pulse.samples, t, f)) for f in (3.5e6, 5e6, 6.5e6)]
    assert 20 * np.log10(np.array(spectrum) / spectrum[1]) == pytest.approx([-6.02, 0, -6.02], abs=0.01)


@pytest.mark.parametrize(
    ("changes", "message"),
    [
        ({"points": [[0, 0]]}, "points must"),
        ({"pistons": 3}, "pistons must"),
        ({"pistons": pf.Piston(1, 1, weight=1j)}, "weight"),
        ({"medium": "water"}, "medium must be one real number"),
        ({"medium": 0}, "speed"),
        ({"medium": pf.Medium(C, -1)}, "attenuation"),
        ({"medium": pf.Medium(C, 1, 4)}, "exponent"),
        ({"excitation": [0, 1]}, "excitation must be an Excitation"),
        ({"excitation": pf.Excitation([np.nan], 1)}, "samples of the excitation"),
        ({"excitation": pf.Excitation([1], 0)}, "rate of the excitation"),
        ({"delays": [1, 2]}, r"delays must have the shape \(1,\)"),
        ({"delays": [np.nan]}, "delay"),
        ({"times": [0, 1, 3]}, "times must be one or more finite numbers in equal steps upwards"),
        ({"times": []}, "times must"),
        ({"times": [1, 0]}, "times must"),
        ({"times": [0.0], "rate": 1}, "rate must be None if there are times"),
        ({"rate": 0}, "rate"),
        ({"tolerance": 1e-7}, "tolerance of a pulse must be"),
        ({"progress": 3}, "progress must be"),
    ],
)
def test_messages(changes: dict[str, Any], message: str) -> None:
    arguments = {"points": [[0, 0, 1e-2]], "pistons": PISTON, "medium": C, "excitation": BURST, **changes}
    with pytest.raises(ValueError, match=message):
        pf.pulse(**arguments)  # type: ignore[call-overload]


def test_messages_of_excitations() -> None:
    for call, name in [
        (lambda: pf.tone_burst(0, 2, 10), "frequency"),
        (lambda: pf.tone_burst(1, 0, 10), "cycles"),
        (lambda: pf.tone_burst(1, 2, 7), "rate"),
        (lambda: pf.tone_burst(1, 2, 10, "square"), "window"),
        (lambda: pf.tone_burst(1, 2, 10, 3), "window"),  # type: ignore[arg-type]
        (lambda: pf.gauss_pulse(1, 3, 10), "bandwidth"),
        (lambda: pf.Excitation([[0, 1]], 1), "samples"),
        (lambda: pf.Medium("1"), "speed"),  # type: ignore[arg-type]
        (lambda: pf.focus_delays(PISTON, (0, 0, 1), 0), "speed"),
        (lambda: pf.steer_delays(PISTON, (0, 0, 0), C), "direction"),
    ]:
        with pytest.raises(ValueError, match=rf"^{name} must"):
            call()


def test_progress_and_interruption() -> None:
    points = np.random.default_rng(1).uniform([-0.02, -0.02, 1e-3], [0.02, 0.02, 0.05], (400, 3))
    array = pf.linear_array(64, 0.75e-3, 0.7e-3, 6e-3)
    start = time.perf_counter()
    pf.pulse(points, array, C, BURST)
    more = np.resize(points, (int(400 * max(1, 0.6 / (time.perf_counter() - start))), 3))
    fractions: list[float] = []
    pf.pulse(more, array, C, BURST, progress=fractions.append)
    assert fractions == sorted(fractions)
    assert len(fractions) > 2
    assert fractions[-1] == 1

    def stop(fraction: float) -> None:
        raise KeyboardInterrupt("enough")

    start = time.perf_counter()
    with pytest.raises(KeyboardInterrupt, match="enough"):
        pf.pulse(more, array, C, BURST, progress=stop)
    assert time.perf_counter() - start < 0.4
