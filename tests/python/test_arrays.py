"""Arrays, windows, steering and focusing."""

import numpy as np
import pytest

import pistonfield as pf

PITCH, WIDTH, HEIGHT, K = 0.3e-3, 0.27e-3, 5e-3, 2 * np.pi / 0.3e-3


def centres(array):
    return np.array([piston.centre for piston in array])


def weights(array):
    return np.array([piston.weight for piston in array])


def test_elements_of_a_row():
    array = pf.linear_array(5, PITCH, WIDTH, HEIGHT)
    assert {(p.width, p.height, p.rotation, p.weight) for p in array} == {(WIDTH, HEIGHT, None, 1)}
    np.testing.assert_allclose(centres(array), np.outer((-2, -1, 0, 1, 2), (PITCH, 0, 0)), atol=1e-18)


def test_the_first_axis_of_a_matrix_varies_fastest():
    array = pf.matrix_array((3, 2), (1.0, 2.0), 0.5, 1.5)
    expected = [(x, y, 0) for y in (-1, 1) for x in (-1, 0, 1)]
    np.testing.assert_allclose(centres(array), expected)
    assert {(p.width, p.height) for p in array} == {(0.5, 1.5)}


@pytest.mark.parametrize("radius", [60e-3, -60e-3])
def test_elements_of_an_arc_have_its_radius_and_face_away_from_its_centre_or_towards_it(radius):
    array = pf.convex_array(7, 5e-3, radius, 4e-3, 13e-3)
    to_centre = np.array((0, 0, -radius)) - centres(array)
    np.testing.assert_allclose(np.linalg.norm(to_centre, axis=1), abs(radius))
    normals = np.array([np.eye(3)[2] if p.rotation is None else np.array(p.rotation)[:, 2] for p in array])
    np.testing.assert_allclose(normals, -to_centre / radius, atol=1e-12)


def test_windows():
    np.testing.assert_allclose(pf.apodization("hann", 4), np.cos(np.pi * np.array((-3, -1, 1, 3)) / 8) ** 2)
    np.testing.assert_allclose(pf.apodization("gauss", 3, 2.0), np.exp(-((2 * np.array((-2, 0, 2)) / 3) ** 2) / 2))
    assert pf.apodization("rectangular", np.int32(3)).tolist() == [1, 1, 1]
    np.testing.assert_allclose(
        pf.apodization("hamming", (3, 2)), np.outer(pf.apodization("hamming", 2), pf.apodization("hamming", 3)).ravel()
    )


def test_waves_arrive_at_the_focus_in_phase():
    focus = np.array((5e-3, 1e-3, 30e-3))
    array = pf.focused(pf.linear_array(16, PITCH, WIDTH, HEIGHT), focus, K)
    paths = np.linalg.norm(focus - centres(array), axis=1)
    phases = np.angle(weights(array) * np.exp(-1j * K * (paths - np.linalg.norm(focus))))
    assert max(abs(phases)) < 1e-9


def test_steering_is_focusing_on_a_distant_point_and_multiplies_weights():
    direction = np.array((0.3, 0.1, 0.9))
    array = pf.weighted(pf.linear_array(8, PITCH, WIDTH, HEIGHT), 2j * np.ones(8))
    steered, focused = pf.steered(array, direction, K), pf.focused(array, 1e9 * direction, K)
    np.testing.assert_allclose(weights(steered), weights(focused), atol=1e-9)
    np.testing.assert_allclose(abs(weights(steered)), 2)


def test_waves_of_a_lens_arrive_at_its_focus_in_phase():
    turned = pf.Piston(1e-3, HEIGHT, (1e-3, 0, 2e-3), [[0, 0, 1], [0, 1, 0], [-1, 0, 0]], 2j)
    array = pf.lensed([turned, pf.Piston(WIDTH, HEIGHT)], 25e-3, K - 5j)
    first = [piston for piston in array if piston.rotation is not None]
    assert array[: len(first)] == first and len(array) == 2 * len(first)
    np.testing.assert_allclose(sum(piston.height for piston in first), HEIGHT)
    paths = np.linalg.norm(centres(first) - (26e-3, 0, 2e-3), axis=1) - 25e-3
    np.testing.assert_allclose(weights(first), 2j * np.exp(1j * K * paths), atol=1e-9)
    np.testing.assert_allclose(weights(array[len(first) :]), weights(first) / 2j, atol=1e-9)


def test_a_lens_against_a_sum_over_its_face():
    x, y = (np.arange(20) - 9.5) / 20 * WIDTH, (np.arange(1500) - 749.5) / 1500 * HEIGHT
    points = np.array([(0, 0, 25), (0, 0.3, 25), (0.2, 1, 10), (0, 2.4, 1)]) * 1e-3
    u, v = np.meshgrid(x, y)
    lens = np.exp(1j * K * (np.hypot(25e-3, v) - 25e-3))
    distances = [np.sqrt((p[0] - u) ** 2 + (p[1] - v) ** 2 + p[2] ** 2) for p in points]
    cell = WIDTH * HEIGHT / u.size
    exact = np.array([K / (2 * np.pi) * cell * np.sum(lens * np.exp(-1j * K * R) / R) for R in distances])
    for tolerance in (1e-2, 1e-3):
        p = pf.field(points, pf.lensed(pf.Piston(WIDTH, HEIGHT), 25e-3, K, tolerance), K, tolerance=1e-6)
        assert max(abs(p - exact)) < (tolerance + 1e-4) * max(abs(exact))


@pytest.mark.parametrize(
    ("name", "call"),
    [
        ("count", lambda: pf.linear_array(0, 1, 1, 1)),
        ("count", lambda: pf.linear_array(2.5, 1, 1, 1)),
        ("count", lambda: pf.linear_array(True, 1, 1, 1)),
        ("pitch", lambda: pf.linear_array(2, -1, 1, 1)),
        ("width", lambda: pf.linear_array(2, 1, 1.1, 1)),
        ("height", lambda: pf.linear_array(2, 1, 1, np.nan)),
        ("counts", lambda: pf.matrix_array(4, (1, 1), 1, 1)),
        ("counts", lambda: pf.matrix_array((4, 0), (1, 1), 1, 1)),
        ("counts", lambda: pf.matrix_array((4, True), (1, 1), 1, 1)),
        ("pitches", lambda: pf.matrix_array((4, 4), 1, 1, 1)),
        ("radius", lambda: pf.convex_array(100, 1, 1, 1, 1)),
        ("name", lambda: pf.apodization("hanning", 4)),
        ("name", lambda: pf.apodization(None, 4)),
        ("name", lambda: pf.apodization("hann\0", 4)),
        ("counts", lambda: pf.apodization("hann", True)),
        ("parameter", lambda: pf.apodization("tukey", 4, 2)),
        ("weights", lambda: pf.weighted(pf.Piston(1, 1), [1, 2])),
        ("weights", lambda: pf.weighted(pf.Piston(1, 1), ["1"])),
        ("weights", lambda: pf.weighted(pf.Piston(1, 1), np.ma.masked_array([1], [True]))),
        ("direction", lambda: pf.steered(pf.Piston(1, 1), (0, 0, 0), 1)),
        ("focus", lambda: pf.focused(pf.Piston(1, 1), (0, 0), 1)),
        ("focus", lambda: pf.lensed(pf.Piston(1, 1), 0, 1)),
        ("focus", lambda: pf.lensed(pf.Piston(1, 1), (0, 0, 1), 1)),
        ("k", lambda: pf.lensed(pf.Piston(1, 1), 1, "1")),
        ("tolerance", lambda: pf.lensed(pf.Piston(1, 1), 1, 1, 1)),
        ("tolerance must be larger", lambda: pf.lensed(pf.Piston(1, 1e5), 1, 7, 1e-12)),
        ("pistons", lambda: pf.focused([1], (0, 0, 1), 1)),
    ],
)
def test_errors_name_the_argument(name, call):
    with pytest.raises(ValueError, match=name):
        call()
