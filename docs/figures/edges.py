"""edges.py <file>: draws the piston from the front, and the contribution of an edge for a point in front
of the piston and for one beside it."""

import sys
from math import atan2, cos, hypot, sin

from drawing import INK, PISTON, RAY, SHADE, QUIET, Drawing

HALF_X, HALF_Y = 70, 105  # of the piston, in the plane of the page: x up, y to the left


def panel(drawing, origin, foot, low, high, title):
    """Draws the piston around origin, the projection of a point at foot, and the part of the right edge from
    low to high as seen from there."""
    def at(across, up):
        return origin[0] + across, origin[1] - up

    corners = [(-HALF_Y, HALF_X), (HALF_Y, HALF_X), (HALF_Y, -HALF_X), (-HALF_Y, -HALF_X)]
    drawing.area([at(*corner) for corner in corners], SHADE, PISTON, 0.6)
    distance = HALF_Y - foot[0]
    piece = [at(HALF_Y, low), at(HALF_Y, high)]
    drawing.area([at(*foot), *piece], RAY, opacity=0.25)
    for end in piece:
        drawing.line([at(*foot), end], RAY, 1)
    drawing.line(piece, RAY, 4)

    # The foot of the perpendicular, and σ measured from there.
    drawing.arrow(at(*foot), at(HALF_Y, foot[1]), INK, 1.3)
    drawing.label(at(foot[0] + 0.42 * distance, foot[1] - 18), "*d*")
    away = 18 if distance > 0 else -18
    drawing.arrow(at(HALF_Y + away, foot[1]), at(HALF_Y + away, high), PISTON, 1.2)
    drawing.label(at(HALF_Y + 1.8 * away, (foot[1] + high) / 2 - 5), "*σ*", PISTON)

    angle = atan2((low + high) / 2 - foot[1], distance)
    reach = 0.68 * hypot((low + high) / 2 - foot[1], distance)
    drawing.label(at(foot[0] + reach * cos(angle), foot[1] + reach * sin(angle) - 5), "d*θ*", RAY,
                  size=14)
    drawing.dot(at(*foot), INK)
    drawing.label(at(foot[0] - (14 if distance > 0 else -14), foot[1] - 5), "*Q*")
    drawing.label(at(0, -HALF_X - 38), title, QUIET, size=14)


drawing = Drawing(680, 270)
panel(drawing, (165, 115), (-45, -25), 20, 55, "before the piston: every edge at *d* &gt; 0")
panel(drawing, (455, 115), (185, -25), 5, 45, "beside it: this edge at *d* &lt; 0")
drawing.write(sys.argv[1])
