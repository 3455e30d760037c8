"""Options and settings of the tests of the installed package; scripts/test-python runs them."""

from __future__ import annotations

from pathlib import Path

import hypothesis
import matplotlib
import pytest

ROOT = Path(__file__).resolve().parents[2]

matplotlib.use("agg")
hypothesis.settings.register_profile("unhurried", deadline=None, database=None, print_blob=True)
hypothesis.settings.register_profile("few", hypothesis.settings.get_profile("unhurried"), max_examples=20)
hypothesis.settings.load_profile("unhurried")


def pytest_addoption(parser: pytest.Parser) -> None:
    parser.addoption("--print-fields", type=Path, help="the C++ program print_fields")


def pytest_report_header() -> list[str]:
    import pistonfield as pf

    return [f"pistonfield: {pf.__file__}"]


@pytest.fixture(scope="session")
def root() -> Path:
    """The checkout, for its data, pages and examples. The package is that which is installed."""
    return ROOT


@pytest.fixture(scope="session")
def print_fields(pytestconfig: pytest.Config) -> Path:
    program = pytestconfig.getoption("--print-fields")
    if program is None:
        pytest.skip("needs --print-fields")
    return Path(program).resolve()
