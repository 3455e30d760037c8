"""The examples run as users run them; a field computed by many processes has the bits of one."""

from __future__ import annotations

import os
import re
import runpy
import shutil
import subprocess
import sys
from pathlib import Path

import matplotlib.image
import numpy as np
import pytest
from rayleigh import rayleigh_sum

import pistonfield as pf


def run(*command: object, folder: Path) -> str:
    environment = os.environ | {"MPLBACKEND": "agg"}
    finished = subprocess.run(
        [str(part) for part in command], cwd=folder, env=environment, capture_output=True, text=True, timeout=300
    )
    assert finished.returncode == 0, finished.stdout + finished.stderr
    return finished.stdout + finished.stderr


def test_every_example_is_tested(root: Path) -> None:
    tested = re.findall(r'\broot / "examples/python/(\w+\.py)"', Path(__file__).read_text())
    assert sorted(set(tested)) == sorted(path.name for path in (root / "examples/python").glob("*.py"))


def test_picture(root: Path, tmp_path: Path) -> None:
    run(sys.executable, root / "examples/python/picture.py", folder=tmp_path)
    picture = matplotlib.image.imread(tmp_path / "picture.png")
    assert len(np.unique(picture.reshape(-1, picture.shape[-1]), axis=0)) > 200


def test_picture_is_that_of_the_readme(root: Path) -> None:
    def lines(text: str) -> set[str]:
        return {line.split("#")[0].strip() for line in text.splitlines()} - {""}

    (block,) = re.findall(r"```python\n(.*?)```", (root / "python/README.md").read_text(), re.DOTALL)
    assert lines(block) <= lines((root / "examples/python/picture.py").read_text())


def test_focused(root: Path, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
    script = root / "examples/python/focused.py"
    printed = run(sys.executable, script, folder=tmp_path)
    picture = matplotlib.image.imread(tmp_path / "focused.png")
    assert len(np.unique(picture.reshape(-1, picture.shape[-1]), axis=0)) > 200

    # In the focal plane, against a double sum over the elements.
    example = runpy.run_path(str(script))
    example["plt"].close("all")
    x, k, array = np.linspace(-1.5e-3, 1.5e-3, 601), example["k"], example["array"]
    exact = abs(rayleigh_sum(np.stack([x, 0 * x, np.full_like(x, 30e-3)], axis=-1), array, k, (6, 24)))
    assert abs(np.interp(x, example["line"], example["beam"]) - exact).max() < 1e-4 * exact.max()
    assert exact.argmax() == 300
    level = 20 * np.log10(exact / exact.max())
    (width,), (side_lobe,) = re.findall(r"width (\S+) mm", printed), re.findall(r"side lobes (\S+) dB", printed)
    assert float(width) * 1e-3 == pytest.approx(2 * np.interp(6, -level[300:400], x[300:400]), abs=7e-6)
    assert float(side_lobe) == pytest.approx(level[abs(x) > 0.6e-3].max(), abs=0.06)

    # Against the far-field formulas of a uniform aperture D: a sinc, which is at half its peak for 1.207 lambda z / D.
    assert float(width) == pytest.approx(1.207 * 0.3 * 30 / (64 * 0.3), rel=0.06)
    assert float(side_lobe) == pytest.approx(-13.26, abs=0.2)

    # Along the axis, the maximum is shallow and lies before the focus.
    z = example["z"]
    on_axis = abs(example["plane"])[len(example["x"]) // 2, 0]
    exact = abs(rayleigh_sum(np.stack([0 * z, 0 * z, z], axis=-1)[::10], array, k, (6, 48)))
    assert abs(on_axis[::10] - exact)[z[::10] > 5e-3].max() < 1e-4 * exact.max()
    assert 28e-3 < z[on_axis.argmax()] <= 30e-3


def test_progress(root: Path, tmp_path: Path) -> None:
    output = run(sys.executable, root / "examples/python/progress.py", folder=tmp_path)
    percentages = [int(number) for number in re.findall(r"(\d+)%\|", output)]
    assert percentages == sorted(percentages)
    assert percentages[0] == 0
    assert percentages[-1] == 100
    assert len(set(percentages)) > 2


def check_bits(script: Path, field: Path, printed: str) -> None:
    """The field has the bits of one call with the same order, and meets the tolerance of the example."""
    example = runpy.run_path(str(script), run_name="example")
    points, array, k = np.asarray(example["points"]), example["array"], example["k"]
    (order,) = {int(number) for number in re.findall(r"order (\d+)", printed)}
    p = np.load(field)
    assert p.tobytes() == pf.field(points, array, k, order=order).tobytes()
    exact = pf.field(points, array, k, tolerance=1e-8)
    assert abs(p - exact).max() < 1e-4 * abs(exact).max()


def test_dask(root: Path, tmp_path: Path) -> None:
    script = root / "examples/python/dask_blocks.py"
    printed = run(sys.executable, script, folder=tmp_path)
    assert "5 blocks" in printed
    check_bits(script, tmp_path / "field.npy", printed)


@pytest.mark.parametrize("processes", [2, 3])
def test_mpi(processes: int, root: Path, tmp_path: Path) -> None:
    if shutil.which("mpirun") is None:
        pytest.skip("needs mpirun")
    script = root / "examples/python/mpi_blocks.py"
    launcher = ["mpirun", "--oversubscribe", *(["--allow-run-as-root"] if os.geteuid() == 0 else [])]
    printed = run(*launcher, "-n", processes, sys.executable, script, folder=tmp_path)
    assert sorted(re.findall(r"process (\d) of (\d)", printed)) == [(str(n), str(processes)) for n in range(processes)]
    check_bits(script, tmp_path / "field.npy", printed)
