"""geometry.py <file>: draws the piston in its plane, its sides and axes, and a point."""

import sys

from drawing import INK, PISTON, RAY, SHADE, QUIET, Drawing


def seen(x, y, z):
    """x upward, z to the right, y out of the page, to the left and downward."""
    return 165 + 44 * z - 28 * y, 150 - 50 * x + 19 * y


drawing = Drawing(640, 310)
a, b = 1.1, 1.6  # half the sides along x and y

drawing.line([seen(0, 0, 0), seen(-2.3, 0, 0)], QUIET, 1.2, dashed=True)
drawing.line([seen(0, 0, 0), seen(0, -3, 0)], QUIET, 1.2, dashed=True)
drawing.area([seen(a, b, 0), seen(a, -b, 0), seen(-a, -b, 0), seen(-a, b, 0)], SHADE, PISTON, 0.85)
for name, end, at in [("x", (2.5, 0, 0), (2.42, 0.55, 0)), ("y", (0, 3.4, 0), (0.1, 3.9, 0)),
                      ("z", (0, 0, 9.8), (-0.38, 0, 9.75))]:
    drawing.arrow(seen(0, 0, 0), seen(*end))
    drawing.label(seen(*at), f"*{name}*")
drawing.dot(seen(0, 0, 0), radius=3)

drawing.arrow(seen(-a, b + 0.45, 0), seen(a, b + 0.45, 0), PISTON, 1.2, both=True)
drawing.label(seen(0.35, b + 0.8, 0), "*s*", PISTON)
drawing.arrow(seen(-a - 0.3, b, 0), seen(-a - 0.3, -b, 0), PISTON, 1.2, both=True)
drawing.label(seen(-a - 0.68, -0.15, 0), "*l*", PISTON)

element = (0.62, -0.75)
e = 0.11
corners = [(e, e), (e, -e), (-e, -e), (-e, e)]
drawing.area([seen(element[0] + dx, element[1] + 1.6 * dy, 0) for dx, dy in corners], PISTON)
drawing.label(seen(element[0] - 0.52, element[1] - 0.05, 0), "d*S*", PISTON, size=14)
point = (1.3, -0.9, 6)
drawing.line([seen(*element, 0), seen(*point)], RAY, 1.8)
drawing.dot(seen(*point), RAY)
middle = [(p + q) / 2 for p, q in zip((*element, 0), point)]
drawing.label(seen(middle[0] + 0.18, middle[1], middle[2]), "*R*", RAY)
drawing.label(seen(point[0] - 0.05, point[1], point[2] + 0.22), "(*x*, *y*, *z*)", INK, "start")

drawing.label((240, 222), "the piston lies in the plane *z* = 0, centred on the origin:", QUIET,
              "start", 14)
drawing.label((240, 242), "side *s* along *x*, side *l* along *y*, both full lengths", QUIET,
              "start", 14)
drawing.write(sys.argv[1])
