"""The tutorial runs, shows what is stored in it, and states what is true.

    python tests/python/test_notebook.py          stores what it shows now

Look at the pictures before you commit them.
"""

from __future__ import annotations

import base64
import copy
import inspect
import io
import json
import os
import re
import tempfile
from collections.abc import Iterator
from pathlib import Path
from types import SimpleNamespace
from typing import Any
from unittest import mock

import matplotlib.font_manager
import matplotlib.image
import matplotlib.pyplot as plt
import nbformat
import numpy as np
import pytest
from nbclient import NotebookClient
from nbformat import NotebookNode
from rayleigh import rayleigh_sum
from traitlets.config import Config

import pistonfield as pf

NOTEBOOK = Path(__file__).resolve().parents[2] / "examples/python/tutorial.ipynb"
METADATA = {
    "kernelspec": {"display_name": "Python 3", "language": "python", "name": "python3"},
    "language_info": {"name": "python"},
}
LEFTOVER = re.compile(r"(?<![\w.)])/\w+/|\bat 0x|\x1b|[Ww]arning")
TIME = re.compile(r"\d+ ms")


def read() -> NotebookNode:
    return nbformat.read(NOTEBOOK, as_version=4)


def code_cells(notebook: NotebookNode) -> list[NotebookNode]:
    return [cell for cell in notebook.cells if cell.cell_type == "code"]


def run(notebook: NotebookNode) -> NotebookNode:
    """A copy with the results of a new kernel, which reads no settings of the user and needs no network."""
    executed = copy.deepcopy(notebook)
    matplotlib.font_manager.findfont("DejaVu Sans")  # now, since matplotlib reports when it first lists all fonts
    with tempfile.TemporaryDirectory() as folder, mock.patch.dict(os.environ):
        os.environ.pop("MPLBACKEND", None)
        os.environ |= {f"JUPYTER_{kind}_DIR": folder for kind in ("CONFIG", "DATA", "RUNTIME")} | {"IPYTHONDIR": folder}
        NotebookClient(
            executed,
            config=Config(ConnectionFileMixin={"transport": "ipc", "ip": f"{folder}/socket"}),
            kernel_name="python3",
            timeout=300,
            record_timing=False,
            coalesce_streams=True,
            resources={"metadata": {"path": folder}},
        ).execute()
    return executed


def rewrite() -> None:
    """Stores what the cells show. A cell that shows the same but for a time keeps what it has."""
    notebook = read()
    for count, (cell, executed) in enumerate(zip(code_cells(notebook), code_cells(run(notebook))), 1):
        before, now = (
            TIME.sub("", json.dumps(outputs, sort_keys=True)) for outputs in (cell.outputs, executed.outputs)
        )
        if now != before:
            cell.outputs = executed.outputs
        cell.execution_count = count
    for cell in notebook.cells:
        cell.metadata = {}
    notebook.metadata = METADATA
    nbformat.validate(notebook)
    nbformat.write(notebook, NOTEBOOK)


def pictures(cell: NotebookNode) -> list[np.ndarray[Any, Any]]:
    encoded = [output.data["image/png"] for output in cell.outputs if output.output_type == "display_data"]
    return [matplotlib.image.imread(io.BytesIO(base64.b64decode(png)), format="png") for png in encoded]


def shown(cell: NotebookNode) -> list[Any]:
    """What a cell shows: texts without times, and the sizes of pictures."""
    texts = [
        (
            output.output_type,
            output.get("name"),
            TIME.sub("", output.get("text", "")),
            output.get("data", {}).get("text/plain"),
        )
        for output in cell.outputs
    ]
    return [texts, [picture.shape for picture in pictures(cell)]]


def numbers(text: str) -> set[float]:
    """The numbers in a text; lengths with the unit mm and frequencies in MHz are those in m and Hz."""
    digits = str.maketrans("⁻⁰¹²³⁴⁵⁶⁷⁸⁹", "-0123456789")
    text = re.sub(r"10([⁻⁰¹²³⁴⁵⁶⁷⁸⁹]+)", lambda power: "1e" + power[1].translate(digits), text)
    scales = {"mm": 1e-3, "MHz": 1e6}
    found = re.findall(r"(?<![\w.])(\d+(?:\.\d+)?(?:e-?\d+)?)(?: (mm|MHz)\b)?", text)
    return {float(f"{float(number) * scales.get(unit, 1):.9g}") for number, unit in found}


@pytest.fixture(scope="module")
def stored() -> NotebookNode:
    return read()


@pytest.fixture(scope="module")
def printed(stored: NotebookNode) -> str:
    return "".join(output.text for cell in code_cells(stored) for output in cell.outputs if "text" in output)


@pytest.fixture(scope="module")
def variables(stored: NotebookNode) -> Iterator[SimpleNamespace]:
    """The variables at the end of the notebook."""
    values: dict[str, Any] = {}
    with matplotlib.rc_context():
        for cell in code_cells(stored):
            exec(cell.source, values)
        plt.close("all")
        yield SimpleNamespace(**values)


def test_cells_show_what_is_stored(stored: NotebookNode) -> None:
    finished = run(stored)
    for cell, executed in zip(code_cells(stored), code_cells(finished)):
        assert shown(executed) == shown(cell), cell.source
        for now, before in zip(pictures(executed), pictures(cell)):
            assert abs(now - before).mean() < 1e-3, cell.source


def test_cells_are_stored_in_the_order_of_one_run(stored: NotebookNode) -> None:
    counts = [cell.execution_count for cell in code_cells(stored)]
    assert counts == list(range(1, len(counts) + 1))


def test_pictures(stored: NotebookNode) -> None:
    drawing = {cell.id: cell for cell in code_cells(stored) if "plt." in cell.source or "pf.plot(" in cell.source}
    for name in ("setup", "errors"):
        del drawing[name]
    for cell in drawing.values():
        (picture,) = pictures(cell)
        assert len(np.unique(picture.reshape(-1, 4), axis=0)) > 100
    assert NOTEBOOK.stat().st_size < 600_000  # a third more than its pictures


def test_nothing_is_left_of_the_machine_that_stored_it(stored: NotebookNode) -> None:
    assert stored.metadata == METADATA
    for cell in stored.cells:
        assert cell.metadata == {}
        assert not LEFTOVER.search(cell.source)
    for cell in code_cells(stored):
        for output in cell.outputs:
            assert output.output_type in ("stream", "display_data")
            assert output.get("name", "stdout") == "stdout"
            assert set(output.get("data", {})) <= {"image/png", "text/plain"}
            assert not LEFTOVER.search(output.get("text", "") + output.get("data", {}).get("text/plain", ""))


def test_numbers_of_the_texts_are_those_of_the_cells(stored: NotebookNode, printed: str) -> None:
    computed = numbers("\n".join(cell.source for cell in code_cells(stored)) + printed)
    for cell in stored.cells:
        if cell.cell_type == "markdown":
            assert numbers(re.sub(r"\]\([^)]*\)", "]", cell.source)) <= computed, cell.source


def test_links_of_the_texts(stored: NotebookNode) -> None:
    targets = [target for cell in stored.cells for target in re.findall(r"\]\(([^)]*)\)", cell.source)]
    assert len(targets) >= 3
    for target in targets:
        assert (NOTEBOOK.parent / target).is_file(), target


def test_axis_of_the_piston(variables: SimpleNamespace, printed: str) -> None:
    depth, on_axis, side = variables.depth, variables.on_axis, variables.piston.width
    points = np.stack([0 * depth, 0 * depth, depth], axis=-1)[depth > 1e-3]
    exact = abs(rayleigh_sum(points, [variables.piston], variables.k, (48, 48)))
    assert abs(on_axis[depth > 1e-3] - exact).max() < 1e-4 * on_axis.max()
    assert f"|p| = {exact.max():.2f} at z = {points[exact.argmax(), 2] * 1e3:.1f} mm" in printed
    end = points[exact.argmax(), 2]
    assert not np.any(np.diff(exact[points[:, 2] > end]) >= 0)
    assert exact[-1] == pytest.approx(side**2 / (variables.wavelength * depth[-1]), rel=0.01)


def test_tolerances(variables: SimpleNamespace, printed: str) -> None:
    assert inspect.signature(pf.grid).parameters["tolerance"].default == 1e-4
    lines = re.findall(r"tolerance (\S+): .* error below (\S+) of", printed)
    assert len(lines) == 4
    assert all(float(bound) <= float(tolerance) for tolerance, bound in lines)


def test_beam_of_the_array(variables: SimpleNamespace, printed: str) -> None:
    x = np.linspace(-1.5e-3, 1.5e-3, 601)
    points = np.stack([x, 0 * x, np.full_like(x, variables.focus[2])], axis=-1)
    expected = {"rectangular": -13.26, "hann": -31.47}  # side lobes of the continuous apertures, far away, in dB
    lines = re.findall(r"(\w+) +-6 dB width (\S+) mm, side lobes (\S+) dB", printed)
    assert [name for name, _, _ in lines] == list(expected)
    for name, width, side_lobe in lines:
        weighted = pf.weighted(variables.array, pf.apodization(name, 64))
        exact = decibels(rayleigh_sum(points, weighted, variables.k, (6, 24)))
        assert float(width) * 1e-3 == pytest.approx(2 * np.interp(6, -exact[300:400], x[300:400]), abs=7e-6)
        peaks = exact[1:-1][(exact[1:-1] > exact[:-2]) & (exact[1:-1] > exact[2:])]
        assert float(side_lobe) == pytest.approx(np.sort(peaks)[-2], abs=0.06)
        assert float(side_lobe) == pytest.approx(expected[name], abs=2)


def test_grating_lobe(variables: SimpleNamespace, printed: str) -> None:
    angles = np.radians(np.linspace(-80, 80, 1601))
    points = 10 * np.stack([np.sin(angles), 0 * angles, np.cos(angles)], axis=-1)  # at 10 m
    direction = (np.sin(variables.angle), 0, np.cos(variables.angle))
    lobes = {}
    for count, pitch in ((64, variables.wavelength / 2), (32, variables.wavelength)):
        array = pf.steered(pf.linear_array(count, pitch, 0.9 * pitch, 5e-3), direction, variables.k)
        level = decibels(rayleigh_sum(points, array, variables.k, (6, 4)))
        peaks = (level[1:-1] > level[:-2]) & (level[1:-1] > level[2:]) & (level[1:-1] > -10)
        lobes[count] = np.degrees(angles[1:-1][peaks])
    assert lobes[64] == pytest.approx([25], abs=0.3)
    (stated,) = re.findall(r"grating lobe at (\S+) degrees", printed)
    assert lobes[32] == pytest.approx([float(stated), 25], abs=0.3)


def test_matrix_array_in_pascals(variables: SimpleNamespace, printed: str) -> None:
    (p,) = rayleigh_sum([(3e-3, 2e-3, 15e-3)], variables.matrix, variables.k, (4, 4))
    kilopascals = 1000 * 1500 * 0.05 * abs(p) / 1e3
    assert f"{kilopascals:.0f} kPa at x = 3.00 mm, y = 2.00 mm" in printed


def test_field_of_the_aperture(variables: SimpleNamespace) -> None:
    points, p = variables.points[40::40, ::40].reshape(-1, 3), variables.p[40::40, ::40].ravel()
    exact = rayleigh_sum(points, variables.aperture, variables.k, (6, 24))
    assert abs(p - exact).max() < 1e-4 * abs(variables.p).max()
    on_beam = abs(variables.points[..., 0] / (variables.points[..., 2] + variables.radius) - np.tan(0.24)) < 0.01
    assert on_beam.ravel()[abs(variables.p).argmax()]


def test_number_of_elements(variables: SimpleNamespace, printed: str) -> None:
    assert f"{variables.enough} elements, or {variables.promised} by the formula" in printed
    for count, is_enough in ((variables.enough, True), (variables.enough - 2, False)):
        array = pf.focused(pf.linear_array(count, 0.3e-3, 0.27e-3, 5e-3), variables.focus, variables.k)
        level = decibels(rayleigh_sum([[0, 0, 30e-3], [0.25e-3, 0, 30e-3]], array, variables.k, (6, 24)))
        assert (level[1] < -6) == is_enough
    u = np.linspace(1, 2, 100_001)
    assert 2 * np.interp(-0.5, -np.sin(u) / u, u) / np.pi == pytest.approx(1.207, abs=5e-4)


def decibels(p: np.ndarray[Any, Any]) -> np.ndarray[Any, Any]:
    return 20 * np.log10(abs(p) / abs(p).max())


if __name__ == "__main__":
    rewrite()
