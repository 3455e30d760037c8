"""What is read off fields, against closed forms."""

import numpy as np
import pytest

import pistonfield as pf

HALF = 20 * np.log10(2)
SHAPES = {
    "gaussian": (lambda x: np.exp(-(x**2)), lambda level: np.sqrt(-np.log(level))),
    "lorentzian": (lambda x: 1 / (1 + x**2), lambda level: np.sqrt(1 / level - 1)),
    "cosine": (np.cos, np.arccos),
}


@pytest.mark.parametrize("shape", SHAPES)
@pytest.mark.parametrize("drop", [3, 6, 12])
def test_beams_of_closed_forms(shape, drop):
    values, half_width = SHAPES[shape]
    half = half_width(10 ** (-drop / 20))
    for shift in np.linspace(-0.5, 0.5, 11):
        x = (np.arange(-31, 32) + shift) * half / 30
        found = pf.beam(x + 3, 5j * values(x), drop)
        assert isinstance(found, pf.Beam)
        assert found.width == pytest.approx(2 * half, rel=4e-4)
        assert found.peak == pytest.approx(5, rel=1e-5)
        assert found.position == pytest.approx(3, abs=1e-3 * half)
        assert (found.left, found.right) == pytest.approx((3 - half, 3 + half), abs=1e-3 * half)


def test_the_far_field_of_a_piston():
    x = np.linspace(-300, 300, 301)
    p = pf.grid(x, 0, 1000, pf.Piston(5, 1), 2 * np.pi)
    found = pf.beam(x, p[:, 0, 0], HALF)
    expected = 2 * 1000 * np.tan(np.arcsin(0.6033545644 / 5))  # sinc 0.60335 = 1/2
    assert found.width == pytest.approx(expected, rel=1e-2)
    assert found.position == pytest.approx(0, abs=1e-9)


def test_a_beam_for_each_line_along_any_axis():
    rng = np.random.default_rng(1)
    x = np.cumsum(rng.uniform(0.1, 1, 20))
    p = rng.normal(size=(20, 3, 4)) + 1j * rng.normal(size=(20, 3, 4))
    whole = pf.beam(x, p)
    assert whole.width.shape == (3, 4)
    moved = pf.beam(x, np.moveaxis(p, 0, 1), axis=-2)
    for name in ("peak", "position", "width", "left", "right"):
        expected = [[getattr(pf.beam(x, p[:, i, j]), name) for j in range(4)] for i in range(3)]
        np.testing.assert_array_equal(getattr(whole, name), expected)
        np.testing.assert_array_equal(getattr(moved, name), expected)
    assert pf.beam([1, 2], np.zeros((2, 0))).peak.shape == (0,)


@pytest.mark.parametrize("kind", [np.float32, np.complex64, np.int16])
def test_other_types(kind):
    found = pf.beam(np.arange(5, dtype=np.float32), np.array([0, 1, 2, 1, 0], kind), HALF)
    assert (found.peak, found.position, found.left, found.right) == pytest.approx((2, 2, 1, 3))


def test_no_drop_and_no_number():
    found = pf.beam([1, 2, 3, 4], [4, 3, 2, 1], HALF)
    assert (found.peak, found.position) == (4, 1)
    assert found.right == pytest.approx(3)
    assert np.isnan([found.left, found.width]).all()
    found = pf.beam([1, 2, 3], [[0, 0, 0], [2, np.nan, np.inf], [0, 0, 0]])
    for name in ("peak", "position", "width", "left", "right"):
        assert np.isnan(getattr(found, name)).tolist() == [False, True, True]


@pytest.mark.parametrize(
    ("arguments", "message"),
    [
        (([1, 1], [1, 2]), "x must be two or more finite real numbers in increasing order."),
        (([2, 1], [1, 2]), "x must be two or more"),
        (([1, np.nan], [1, 2]), "x must be two or more"),
        ((1, [1]), "x must be two or more"),
        (([1, 2j], [1, 2]), "x must be real numbers"),
        (([1, 2], [1, 2, 3]), "p must have one number for each of x along its axis 0"),
        (([1, 2], 1), "p must have one number for each of x"),
        (([1, 2], ["a", "b"]), "p must be complex or real numbers"),
        (([1, 2], np.ma.masked_equal([1, 2], 1)), "p must be complex or real numbers"),
        (([1, 2], [1, 2], 0), "drop must be a positive number of decibels."),
        (([1, 2], [1, 2], np.inf), "drop must be a positive"),
        (([1, 2], [1, 2], "6"), "drop must be one real number."),
    ],
)
def test_beams_that_are_refused(arguments, message):
    with pytest.raises(ValueError, match=message):
        pf.beam(*arguments)


def test_pascals_and_intensity_of_a_plane_wave():
    p = -1j * np.exp(-1j * np.arange(6.0))
    pressures = pf.pascals(p, 0.05, 1000, 1500)
    np.testing.assert_allclose(pressures, 75e3 * np.exp(-1j * np.arange(6.0)), rtol=1e-14)
    np.testing.assert_allclose(pf.intensity(pressures, 1000, 1500), 1000 * 1500 * 0.05**2 / 2, rtol=1e-14)


def test_pascals_with_loss():
    omega, k = 6e6, 4000 - 20j
    np.testing.assert_allclose(pf.pascals([1, 2j], 0.1, 1000, omega / k), 100j * omega / k * np.array([1, 2j]))


def test_attenuation():
    f = np.array([1, 2, 5]) * 1e6
    lost = -20 * np.log10(np.exp(-pf.attenuation(0.7, f, 1.1) * 0.03))
    np.testing.assert_allclose(lost, 0.7 * (f / 1e6) ** 1.1 * 3, rtol=1e-12)
    assert pf.attenuation(20 / np.log(10), 1e6) == pytest.approx(100, rel=1e-14)
    assert pf.attenuation(0, 1e6, 3) == 0


def test_peaks():
    t = np.arange(65) / 16
    p = np.outer([1, 5], np.sin(2 * np.pi * t)) + np.array([[0], [2]])
    for positive, negative in (pf.peaks(p), pf.peaks(p.T, axis=0)):
        np.testing.assert_allclose(positive, [1, 7])
        np.testing.assert_allclose(negative, [1, 3])
    assert pf.peaks([1, 2]) == (2, 0)
    assert pf.peaks(np.array([-128, 5], np.int8)) == (5, 128)
    assert np.isnan(pf.peaks([1, np.nan])).all()


@pytest.mark.parametrize(
    ("call", "message"),
    [
        (lambda: pf.pascals("1", 1, 1, 1), "p must be complex or real numbers"),
        (lambda: pf.pascals(1, [1, 2], 1, 1), "velocity must be one finite number."),
        (lambda: pf.pascals(1, 1, 0, 1), "density must be positive and finite."),
        (lambda: pf.pascals(1, 1, 1, np.inf), "speed must be one finite number."),
        (lambda: pf.pascals(1, 1, 1, -1), "speed must have a positive real part."),
        (lambda: pf.intensity(1, 1, 0), "speed must be positive and finite."),
        (lambda: pf.intensity(1, 1, 1j), "speed must be one real number."),
        (lambda: pf.attenuation(-1, 1), "coefficient must be a finite real number, at least 0."),
        (lambda: pf.attenuation(1, [1, 0]), "frequency must be positive and finite."),
        (lambda: pf.attenuation(1, 1j), "frequency must be real numbers"),
        (lambda: pf.attenuation(1, 1, 3.1), "exponent must be from 0 to 3."),
        (lambda: pf.peaks([1j]), "p must be real numbers"),
        (lambda: pf.peaks([]), "p must have pressures against time along its axis -1"),
        (lambda: pf.peaks(1), "p must have pressures against time"),
    ],
)
def test_what_is_refused(call, message):
    with pytest.raises(ValueError, match=message):
        call()


def test_the_numbers_of_cpp_and_of_octave():
    # tests/field has the same numbers, and so do the tests of pistonbeam and others.
    found = pf.beam([-2, -1, 0.5, 1, 3], [0.1j, 0.8 - 0.3j, 2 + 1j, 1.9, -0.2], 3)
    numbers = [found.peak, found.position, found.width, found.left, found.right]
    expected = [2.2360679774997898, 0.5, 1.5819072112393866, -0.20898356214214131, 1.3729236490972452]
    np.testing.assert_allclose(numbers, expected, rtol=4e-16)
    np.testing.assert_allclose(pf.attenuation(0.7, 3.3e6, 1.1), 29.967400147374047, rtol=4e-16)
    np.testing.assert_allclose(pf.intensity(3.3 + 4.1j, 998.7, 1481.3), 9.3620660480443237e-06, rtol=4e-16)
    pressure = pf.pascals(1.1 - 0.3j, 0.05, 998.7, 1481.3 - 2.5j)
    np.testing.assert_allclose(pressure, 22327.9359 + 81328.135800000018j, rtol=4e-16)
