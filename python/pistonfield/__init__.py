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
from ._pulse import Excitation, Medium, PulseUsed, echo, focus_delays, gauss_pulse, pulse, steer_delays, tone_burst
from ._readouts import Beam, attenuation, beam, intensity, pascals, peaks

__all__ = [
    "Beam",
    "Excitation",
    "FieldError",
    "Medium",
    "Piston",
    "PulseUsed",
    "Used",
    "apodization",
    "attenuation",
    "beam",
    "convex_array",
    "echo",
    "field",
    "focus_delays",
    "focused",
    "gauss_pulse",
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
    "pulse",
    "rule",
    "steer_delays",
    "steered",
    "tone_burst",
    "weighted",
]
__version__ = str(info()["version"])
