"""Facts about the package."""

from __future__ import annotations

from . import _core


def info() -> dict[str, str | int]:
    """Facts to include in a problem report.

    Returns
    -------
    dict
        version, revision of the sources, compiler, instructions (the CPU's instruction set in use) and
        threads.

    Examples
    --------
    >>> import pistonfield as pf
    >>> sorted(pf.info())
    ['compiler', 'instructions', 'revision', 'threads', 'version']
    """
    return _core.info()
