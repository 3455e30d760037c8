"""The pressure field of rectangular pistons and of arrays of them, for a tolerance.

All lengths, and 1/k, are in one unit. A plane wave with the velocity of the piston has the magnitude 1; the
pressure in pascals is i rho c v p, with the density rho, the speed of sound c and the velocity amplitude v.
The time factor is exp(+i omega t).
"""

from ._arrays import apodization, convex_array, focused, lensed, linear_array, matrix_array, steered, weighted
from ._error import FieldError
from ._field import Used, field, grid
from ._info import info
from ._order import order, rule
from ._pistons import Piston
from ._plot import plot
from ._readouts import Beam, attenuation, beam, intensity, pascals, peaks

__all__ = [
    "Beam",
    "FieldError",
    "Piston",
    "Used",
    "apodization",
    "attenuation",
    "beam",
    "convex_array",
    "field",
    "focused",
    "grid",
    "info",
    "intensity",
    "lensed",
    "linear_array",
    "matrix_array",
    "order",
    "pascals",
    "peaks",
    "plot",
    "rule",
    "steered",
    "weighted",
]
__version__ = str(info()["version"])
