"""A ValueError names the argument that is wrong."""

from __future__ import annotations

from typing import Any

import numpy as np
import pytest

import pistonfield as pf

PISTON = pf.Piston(5, 7.5)
RAGGED = [[0, 0, 1], [0, 1]]
MASKED = np.ma.masked_array([1.0, 2.0, 3.0], [False, True, False])
CALLS: dict[str, tuple[Any, dict[str, Any]]] = {
    "field": (pf.field, {"points": [[0, 0, 1]], "pistons": PISTON, "k": 1.0}),
    "grid": (pf.grid, {"x": [0, 1], "y": 0, "z": 1, "pistons": PISTON, "k": 1.0}),
    "order": (pf.order, {"points": [[0, 0, 1]], "pistons": PISTON, "k": 1.0, "tolerance": 1e-3}),
    "Piston": (pf.Piston, {"width": 1, "height": 2}),
    "rule": (pf.rule, {}),
}
NO_ARRAY = [RAGGED, None, "one", [1j], [[0], [1, 2]], [object()], MASKED]
NO_COMPLEX = [[1, 2], None, "1", RAGGED, np.zeros((1, 1)), 2**70, np.ma.masked]
NO_NUMBER = [*NO_COMPLEX, 1j]
NO_ORDER = [0, 513, -1, True, np.True_, 10.0, "10", [10], np.array([3]), 1j]
WRONG = {
    ("field", "points"): [*NO_ARRAY, [], [0, 1], np.zeros((3, 2)), 0, np.zeros((2, 3), complex)],
    ("order", "points"): [*NO_ARRAY, [], [0, 1], np.zeros((3, 2))],
    **{("grid", axis): [*NO_ARRAY, [[0, 1]], np.zeros((2, 2))] for axis in "xyz"},
    **{
        (call, "pistons"): [None, 5, "piston", [PISTON, 5], [[5, 7.5]], pf.Piston, iter([])]
        for call in ("field", "grid", "order")
    },
    **{(call, "k"): [*NO_COMPLEX, np.nan, np.inf, complex(1, np.nan)] for call in ("field", "grid", "order")},
    **{(call, "tolerance"): [*NO_NUMBER, 0, 1, -1, np.nan, 1e-13] for call in ("field", "grid", "order")},
    ("field", "order"): NO_ORDER,
    ("grid", "order"): NO_ORDER,
    ("rule", "order"): [*NO_ORDER, None],
    ("field", "progress"): [3, "loud"],
    ("grid", "progress"): [3, "loud"],
    ("Piston", "width"): NO_NUMBER,
    ("Piston", "height"): NO_NUMBER,
    ("Piston", "centre"): [*NO_ARRAY, (1, 2), 0, np.zeros((3, 1))],
    ("Piston", "rotation"): [*(value for value in NO_ARRAY if value is not None), np.eye(2), 0, np.zeros(9)],
    ("Piston", "weight"): [[1], None, "1", RAGGED, object(), np.zeros(1), np.ma.masked],
}


@pytest.mark.parametrize(
    ("call", "name", "value"),
    [
        pytest.param(*key, value, id=f"{'.'.join(key)}-{n}")
        for key, values in WRONG.items()
        for n, value in enumerate(values)
    ],
)
def test_the_argument_is_named(call: str, name: str, value: object) -> None:
    function, arguments = CALLS[call]
    with pytest.raises(ValueError, match=rf"(?i)^(the )?{name}\b.* must .*\.$"):
        function(**{**arguments, name: value})


def test_rows_of_different_lengths_are_named_as_the_cause() -> None:
    with pytest.raises(ValueError, match=r"points must be .* rows of one length"):
        pf.field(RAGGED, PISTON, 1)


def test_a_mesh_is_no_axis() -> None:
    x, z = np.meshgrid([0, 1], [1, 2], indexing="ij")
    with pytest.raises(ValueError, match=r"x must have the shape \(N,\), not \(2, 2\)\. Pass .* grid makes the mesh"):
        pf.grid(x, 0, z, PISTON, 1)


def test_nothing_masked_is_as_any_array() -> None:
    points = np.ma.masked_array([[0.0, 0.0, 1.0]], False)
    assert pf.field(points, PISTON, 1) == pf.field(points.data, PISTON, 1)


@pytest.mark.parametrize(
    ("piston", "message"),
    [
        (pf.Piston(-1, 2), "Piston 1: width and height must be"),
        (pf.Piston(1, np.nan), "Piston 1: width and height must be"),
        (pf.Piston(1, 2, (0, np.inf, 0)), "Piston 1: .*centre"),
        (pf.Piston(1, 2, rotation=2 * np.eye(3)), "Piston 1: its axes must be unit vectors"),
        (pf.Piston(1, 2, rotation=np.diag([1, 1, -1])), "Piston 1: its axes must be .*right-handed"),
        (pf.Piston(1, 2, weight=complex(0, np.nan)), "Piston 1: its weight must be finite"),
    ],
)
def test_the_piston_is_named(piston: pf.Piston, message: str) -> None:
    with pytest.raises(pf.FieldError, match=message):
        pf.field([0, 0, 1], [PISTON, piston], 1)


def test_a_field_error_is_a_value_error() -> None:
    assert issubclass(pf.FieldError, ValueError)
    with pytest.raises(ValueError, match="farther than 1e9 wavelengths"):
        pf.field([0, 0, 1e12], PISTON, 2 * np.pi)


def test_more_points_than_memory_holds() -> None:
    with pytest.raises(pf.FieldError, match="more points than an array can hold"):
        pf.grid(*[np.zeros(2**21)] * 3, PISTON, 1)


def test_errors_leave_the_package_usable() -> None:
    expected = pf.field([0, 0, 1], PISTON, 1)
    for _ in range(100):
        with pytest.raises(pf.FieldError):
            pf.field([0, 0, 1], PISTON, np.nan)
    assert pf.field([0, 0, 1], PISTON, 1) == expected


@pytest.mark.parametrize("call", ["field", "grid", "order"])
def test_waves_decay_by_less_than_they_oscillate(call: str) -> None:
    function, arguments = CALLS[call]
    with pytest.raises(pf.FieldError, match=r"^k has a positive imaginary part: .* pass k - i\*alpha\.$"):
        function(**{**arguments, "k": 1 + 0.1j})
    with pytest.raises(pf.FieldError, match=r"^The attenuation must be at most the real part of k"):
        function(**{**arguments, "k": 1 - 1.1j})
