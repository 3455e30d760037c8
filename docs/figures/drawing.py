"""An SVG drawing of lines, areas and labels in the plane of the page."""

from math import hypot

INK, PISTON, SHADE, RAY, QUIET = "#333333", "#084594", "#9ecae1", "#cb181d", "#666666"


class Drawing:
    def __init__(self, width, height):
        self.parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
            f'width="{width}" height="{height}" font-family="sans-serif" font-size="16">',
            f'  <rect width="{width}" height="{height}" fill="white"/>']

    def line(self, points, colour=INK, width=1.5, dashed=False):
        path = "M" + " L".join(f"{x:.1f},{y:.1f}" for x, y in points)
        dashes = ' stroke-dasharray="4 4"' if dashed else ""
        self.parts.append(f'  <path d="{path}" fill="none" stroke="{colour}" '
                          f'stroke-width="{width}"{dashes}/>')

    def area(self, points, fill, stroke="none", opacity=1):
        corners = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.parts.append(f'  <polygon points="{corners}" fill="{fill}" fill-opacity="{opacity}" '
                          f'stroke="{stroke}" stroke-width="2"/>')

    def dot(self, at, colour=INK, radius=4):
        self.parts.append(f'  <circle cx="{at[0]:.1f}" cy="{at[1]:.1f}" r="{radius}" '
                          f'fill="{colour}"/>')

    def arrow(self, start, end, colour=INK, width=1.5, both=False):
        self.line([start, end], colour, width)
        for tip, tail in [(end, start), (start, end)][:2 if both else 1]:
            length = hypot(tip[0] - tail[0], tip[1] - tail[1])
            u = ((tip[0] - tail[0]) / length, (tip[1] - tail[1]) / length)
            back = (tip[0] - 11 * u[0], tip[1] - 11 * u[1])
            self.area([tip, (back[0] - 4 * u[1], back[1] + 4 * u[0]),
                       (back[0] + 4 * u[1], back[1] - 4 * u[0])], colour)

    def label(self, at, text, colour=INK, anchor="middle", size=16):
        """Letters between * are set as variables."""
        pieces = text.split("*")
        spans = "".join(f'<tspan font-style="italic">{piece}</tspan>' if n % 2 else piece
                        for n, piece in enumerate(pieces))
        self.parts.append(f'  <text x="{at[0]:.1f}" y="{at[1]:.1f}" fill="{colour}" '
                          f'text-anchor="{anchor}" font-size="{size}">{spans}</text>')

    def write(self, path):
        with open(path, "w", encoding="utf-8") as file:
            file.write("\n".join([*self.parts, "</svg>", ""]))
