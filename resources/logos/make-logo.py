"""Turns a logo into the outlines that the page is drawn with: make-logo.py LOGO.svg OUTPUT.logo

The output's first line tells the logo's width and height, how many shapes there are, and its title. Each shape is then a
colour, its outline and how it is filled, in the operators of a PDF's content: "r g b rg", "x y m", "x y l",
"x y x y x y c", "h", "f" or "f*", one to a line, y downwards. Only opaque, plainly filled paths are understood: whatever else
a file asks for is refused.
"""

import sys
from xml.etree import ElementTree

from fontTools.pens.basePen import BasePen
from fontTools.svgLib.path import parse_path

SVG = "{http://www.w3.org/2000/svg}"
FILLS = {"nonzero": "f", "evenodd": "f*"}


def number(value: float, digits: int = 2) -> str:
    return f"{value:.{digits}f}".rstrip("0").rstrip(".")


class OperatorPen(BasePen):
    def __init__(self):
        super().__init__(None)
        self.lines = []

    def _write(self, operator, *points):
        self.lines.append(" ".join([*(number(value) for point in points for value in point), operator]))

    def _moveTo(self, point):
        self._write("m", point)

    def _lineTo(self, point):
        self._write("l", point)

    def _curveToOne(self, first, second, end):
        self._write("c", first, second, end)

    def _closePath(self):
        self._write("h")

    def _endPath(self):
        self._write("h")


def shape(path: ElementTree.Element) -> list[str]:
    unknown = set(path.attrib) - {"d", "fill", "fill-rule"}
    if path.tag != f"{SVG}path" or unknown:
        sys.exit(f"{sys.argv[1]}: {path.tag} with {sorted(unknown)} is not understood")
    fill = path.get("fill", "#000000")
    if len(fill) != 7 or fill[0] != "#":
        sys.exit(f"{sys.argv[1]}: fill {fill} is not understood")
    colour = [number(int(fill[start:start + 2], 16) / 255, 4) for start in (1, 3, 5)]
    pen = OperatorPen()
    parse_path(path.get("d"), pen)
    return [" ".join([*colour, "rg"]), *pen.lines, FILLS[path.get("fill-rule", "nonzero")]]


def main(source: str, output: str) -> None:
    root = ElementTree.parse(source).getroot()
    width, height = root.get("width"), root.get("height")
    if root.tag != f"{SVG}svg" or root.get("viewBox") != f"0 0 {width} {height}":
        sys.exit(f"{source}: no drawing of its own size")
    title = root.findtext(f"{SVG}title", "").strip()
    shapes = [shape(path) for path in root if path.tag != f"{SVG}title"]
    if not title or not shapes:
        sys.exit(f"{source}: no title, or no shape")
    with open(output, "w", encoding="utf-8") as file:
        file.write(f"{width} {height} {len(shapes)} {title}\n")
        for lines in shapes:
            file.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
