"""The examples of the docstrings and of the README run, and every docstring is complete."""

from __future__ import annotations

import doctest
import importlib.metadata
import inspect
import pkgutil
import re
from collections.abc import Iterator
from pathlib import Path
from types import FunctionType
from typing import Any

import matplotlib.pyplot as plt
import numpy as np
import pytest

import pistonfield as pf

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


@pytest.mark.parametrize("name", [*FUNCTIONS, "Piston"])
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
    if name != "Piston":
        assert "Returns" in sections


def test_everything_public_is_exported() -> None:
    public = {name for name, value in vars(pf).items() if not name.startswith("_") and not inspect.ismodule(value)}
    assert public == set(pf.__all__)
    assert list(pf.__all__) == sorted(pf.__all__)
    for name in pf.__all__:
        assert inspect.getdoc(getattr(pf, name)), name


def test_the_readme_draws_its_picture(root: Path, tmp_path: Path) -> None:
    blocks = re.findall(r"^```python\n(.*?)^```$", (root / "python/README.md").read_text(), re.MULTILINE | re.DOTALL)
    assert blocks
    variables: dict[str, Any] = {}
    for block in blocks:
        exec(block, variables)
    (image,) = plt.gcf().axes[0].images
    assert image.get_clim() == (-40, 0)
    assert np.max(image.get_array()) == 0
    plt.savefig(tmp_path / "picture.png")
    assert (tmp_path / "picture.png").stat().st_size > 10_000


def test_information_for_a_problem_report() -> None:
    facts = pf.info()
    assert facts["version"] == pf.__version__
    assert re.fullmatch(r"\d+\.\d+\.\d+", str(facts["version"]))
    assert facts["instructions"] in ("SSE2", "AVX2", "AVX-512", "NEON")
    assert isinstance(facts["threads"], int)
    assert facts["threads"] >= 1
    assert str(facts["compiler"])
    assert str(facts["revision"])


def test_nothing_but_numpy_is_required() -> None:
    required = [re.split(r"[<>=;\[ ]", line)[0] for line in importlib.metadata.requires("pistonfield") or []]
    optional = [line for line in importlib.metadata.requires("pistonfield") or [] if "extra ==" in line]
    assert required[0] == "numpy"
    assert len(required) == 1 + len(optional)
