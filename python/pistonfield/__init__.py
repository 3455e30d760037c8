"""The pressure field of rectangular pistons and of arrays of them, for a tolerance.

All lengths, and 1/k, are in one unit. The pressure is without the factor rho c v: 1 is the pressure of a
plane wave with the velocity of the piston. The time factor is exp(+i omega t).
"""

from ._core import FieldError
from ._field import Used, field, grid
from ._info import info
from ._order import order, rule
from ._pistons import Piston
from ._plot import plot

__all__ = ["FieldError", "Piston", "Used", "field", "grid", "info", "order", "plot", "rule"]
__version__ = info()["version"]
