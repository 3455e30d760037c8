"""The examples of the docstrings and of the pages run, and every docstring is complete."""

from __future__ import annotations

import doctest
import importlib.metadata
import inspect
import pkgutil
import re
import subprocess
import sys
from collections.abc import Iterator
from pathlib import Path
from types import FunctionType
from typing import Any

import matplotlib.pyplot as plt
import numpy as np
import pytest

import pistonfield as pf

ROOT = Path(__file__).resolve().parents[2]
FUNCTIONS = [name for name in pf.__all__ if isinstance(getattr(pf, name), FunctionType)]


@pytest.fixture(autouse=True)
def _figures() -> Iterator[None]:
    yield
    plt.close("all")


def examples() -> list[doctest.DocTest]:
    finder = doctest.DocTestFinder(exclude_empty=True)
    modules = [importlib.import_module(f"pistonfield.{found.name}") for found in pkgutil.iter_modules(pf.__path__)]
    return [test for module in [pf, *modules] for test in finder.find(module) if test.examples]


EXAMPLES = examples()


@pytest.mark.parametrize("example", EXAMPLES, ids=[example.name for example in EXAMPLES])
def test_examples_of_docstrings(example: doctest.DocTest) -> None:
    printed: list[str] = []
    doctest.DocTestRunner().run(example, out=printed.append)
    assert not printed, "".join(printed)


@pytest.mark.parametrize("name", [*FUNCTIONS, "Piston", "Excitation", "Medium"])
def test_docstrings_are_complete(name: str) -> None:
    documented = getattr(pf, name)
    text = inspect.getdoc(documented) or ""
    sections = re.findall(r"^(\w[\w ]*)\n-+$", text, re.MULTILINE)
    assert "Examples" in sections
    assert any(example.name.endswith(f".{name}") for example in EXAMPLES)
    parameters = list(inspect.signature(documented).parameters)
    if parameters:
        assert {"Parameters", "Raises"} <= set(sections)
        listed = text.split("Parameters\n----------\n")[1].split("\n\n")[0]
        names = [
            name for line in re.findall(r"^\w.*", listed, re.MULTILINE) for name in line.split(" :")[0].split(", ")
        ]
        assert names == parameters
    if name in FUNCTIONS:
        assert "Returns" in sections


def test_everything_public_is_exported() -> None:
    public = {name for name, value in vars(pf).items() if not name.startswith("_") and not inspect.ismodule(value)}
    assert public == set(pf.__all__)
    assert list(pf.__all__) == sorted(pf.__all__)
    for name in pf.__all__:
        assert inspect.getdoc(getattr(pf, name)), name


def blocks(page: Path) -> list[str]:
    return re.findall(r"^```python\n(.*?)^```$", page.read_text(), re.MULTILINE | re.DOTALL)


PAGES = [
    page for page in [ROOT / "README.md", ROOT / "python/README.md", *sorted(ROOT.glob("docs/*.md"))] if blocks(page)
]


def run_page(page: Path, folder: Path, monkeypatch: pytest.MonkeyPatch) -> dict[str, Any]:
    """Runs the blocks of a page in their order, and returns the variables."""
    monkeypatch.chdir(folder)
    variables: dict[str, Any] = {}
    for block in blocks(page):
        exec(block, variables)
    return variables


@pytest.mark.parametrize("page", PAGES, ids=lambda page: str(page.relative_to(ROOT)))
def test_blocks_of_pages_run(page: Path, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    run_page(page, tmp_path, monkeypatch)


@pytest.mark.parametrize("page", PAGES, ids=lambda page: str(page.relative_to(ROOT)))
def test_pages_name_what_exists(page: Path) -> None:
    assert set(re.findall(r"\bpf\.(\w+)", page.read_text())) <= set(pf.__all__)


def test_the_readme_draws_its_picture(root: Path, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    run_page(root / "python/README.md", tmp_path, monkeypatch)
    (image,) = plt.gcf().axes[0].images
    assert image.get_clim() == (-40, 0)
    assert np.max(image.get_array()) == 0
    plt.savefig(tmp_path / "picture.png")
    assert (tmp_path / "picture.png").stat().st_size > 10_000


def test_the_tutorial_says_what_it_computes(root: Path, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    page = root / "docs/tutorial.md"
    computed = run_page(page, tmp_path, monkeypatch)
    text = " ".join(page.read_text().split())

    def said(pattern: str) -> list[str]:
        (numbers,) = [found.groups() for found in re.finditer(pattern, text)]
        return list(numbers)

    scale = computed["rho"] * computed["c"] * computed["v"]
    assert said(r"largest error is (\d+) % ") == [f"{100 * computed['largest_error']:.0f}"]
    assert said(r"`pf.order` returns (\d+)\.") == [str(computed["order"])]
    assert said(r"The peak is (\d+) kPa; .* \wcv = (\d+) kPa") == [
        f"{pressure / 1e3:.0f}" for pressure in (computed["largest"], scale)
    ]
    p = computed["pascals"] / (1j * scale)
    errors_on_axis = abs(computed["coarse"] - p)[60] / abs(p).max()
    assert "on the axis the error is half a percent" in text
    assert errors_on_axis.max() == pytest.approx(0.005, rel=0.05)

    assert said(r"the beam is ([\d.]+) mm wide in elevation without the lens, and ([\d.]+) mm with it") == [
        f"{1e3 * computed[name].width:.2f}" for name in ("plain", "lens")
    ]

    call = f"pf.linear_array({said(r'`pf[.]linear_array[(](.*?)[)]`')[0]})"
    row = pf.focused(eval(call, computed), (6e-3, 0, 20e-3), computed["k"])
    assert np.allclose([piston._row() for piston in row], [piston._row() for piston in computed["array"]], atol=1e-15)


def test_information_for_a_problem_report() -> None:
    facts = pf.info()
    assert facts["version"] == pf.__version__
    assert re.fullmatch(r"\d+\.\d+\.\d+", str(facts["version"]))
    assert facts["instructions"] in ("SSE2", "AVX2", "AVX-512", "NEON")
    assert isinstance(facts["threads"], int)
    assert facts["threads"] >= 1
    assert str(facts["compiler"])
    assert str(facts["revision"])


def test_the_sources_say_that_they_are_not_built(root: Path) -> None:
    program = [sys.executable, "-c", "import pistonfield"]
    found = subprocess.run(program, cwd=root / "python", capture_output=True, text=True, check=False)
    assert found.returncode == 1
    assert re.search(r"\nImportError: pistonfield is not built: .*pip install", found.stderr)


def test_nothing_but_numpy_is_required() -> None:
    required = [re.split(r"[<>=;\[ ]", line)[0] for line in importlib.metadata.requires("pistonfield") or []]
    optional = [line for line in importlib.metadata.requires("pistonfield") or [] if "extra ==" in line]
    assert required[0] == "numpy"
    assert len(required) == 1 + len(optional)
