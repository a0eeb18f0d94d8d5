"""Draws the scheme logos: draw-logos.py [FOLDER]

One sober mark for each insurance scheme, all of one make: a plate with the scheme's two-digit code cut out of it, a rule,
and the scheme's name beside it. None shows or copies the emblem of an organisation. Letters become paths, fills are solid
and opaque, so that the marks can go into an archived PDF as they are; the title is what those hear who cannot see the mark.
Needs fontTools and Debian's fonts-roboto-unhinted.
"""

import sys
from pathlib import Path

from fontTools.pens.svgPathPen import SVGPathPen
from fontTools.pens.transformPen import TransformPen
from fontTools.ttLib import TTFont

FONTS = Path("/usr/share/fonts/truetype/roboto/unhinted/RobotoTTF")

# Code, colour of the plate, name in one to three lines.
SCHEMES = [
    ("01", "#2f5d7c", ["Régime", "général"]),
    ("02", "#5b7036", ["Régime", "agricole"]),
    ("03", "#7a5a2b", ["Travailleurs", "indépendants"]),
    ("04", "#6b3f5c", ["Régime des", "cheminots"]),
    ("05", "#2c6e66", ["Transports", "parisiens"]),
    ("06", "#27507f", ["Régime", "des marins"]),
    ("07", "#574f48", ["Régime", "des mines"]),
    ("08", "#4d5b3c", ["Régime", "militaire"]),
    ("09", "#6a5320", ["Banque", "de France"]),
    ("10", "#5c3a3a", ["Clercs et", "employés", "de notaires"]),
    ("90", "#564a7d", ["Régime", "des cultes"]),
    ("91", "#36617a", ["Mutuelle de", "l'Éducation", "nationale"]),
    ("92", "#406552", ["Mutuelle", "générale"]),
    ("93", "#3c4c74", ["Mutuelle", "de la Police"]),
    ("94", "#6f4a34", ["Mutualité", "de la Fonction", "publique"]),
    ("95", "#2b6d78", ["Personnels", "hospitaliers"]),
    ("96", "#30486a", ["Mutuelle", "de la Marine"]),
]

WIDTH, HEIGHT = 360, 150
PLATE, MARGIN, RADIUS = 126, 12, 14
INK = "#2b3038"


class Face:
    def __init__(self, file_name: str):
        self.font = TTFont(FONTS / file_name)
        self.glyphs = self.font.getGlyphSet()
        self.cmap = self.font.getBestCmap()
        self.units = self.font["head"].unitsPerEm
        self.cap_height = self.font["OS/2"].sCapHeight

    def width(self, text: str, size: float) -> float:
        return sum(self.glyphs[self.cmap[ord(c)]].width for c in text) * size / self.units

    def path(self, text: str, size: float, left: float, baseline: float) -> str:
        scale = size / self.units
        pen = SVGPathPen(self.glyphs, ntos=lambda value: f"{value:.1f}".rstrip("0").rstrip("."))
        for character in text:
            glyph = self.glyphs[self.cmap[ord(character)]]
            glyph.draw(TransformPen(pen, (scale, 0, 0, -scale, left, baseline)))
            left += glyph.width * scale
        return pen.getCommands()


def plate(left: float, top: float, side: float, radius: float) -> str:
    straight = side - 2 * radius
    return (f"M{left + radius} {top}h{straight}a{radius} {radius} 0 0 1 {radius} {radius}v{straight}"
            f"a{radius} {radius} 0 0 1 -{radius} {radius}h-{straight}a{radius} {radius} 0 0 1 -{radius} -{radius}"
            f"v-{straight}a{radius} {radius} 0 0 1 {radius} -{radius}z")


def logo(code: str, colour: str, name: list[str], bold: Face, medium: Face) -> str:
    top = (HEIGHT - PLATE) / 2
    size = 84
    left = (PLATE - bold.width(code, size)) / 2
    baseline = top + (PLATE + bold.cap_height * size / bold.units) / 2 - 6
    # A bar under the code, cut out like it, gives the plate a foot.
    bar = f"M24 {top + PLATE - 24}h{PLATE - 48}v6h-{PLATE - 48}z"
    mark = plate(0, top, PLATE, RADIUS) + bold.path(code, size, left, baseline) + bar

    text_left = PLATE + 2 * MARGIN
    line_size = min(40 if len(name) < 3 else 36,
                    *(40 * (WIDTH - text_left) / medium.width(line, 40) for line in name))
    pitch = line_size * 1.16
    cap = medium.cap_height * line_size / medium.units
    first = HEIGHT / 2 + (cap - pitch * (len(name) - 1)) / 2
    words = "".join(medium.path(line, line_size, text_left, first + i * pitch) for i, line in enumerate(name))
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
            f'viewBox="0 0 {WIDTH} {HEIGHT}">\n'
            f'<title>{" ".join(name)}</title>\n'
            f'<path fill="{colour}" fill-rule="evenodd" d="{mark}"/>\n'
            f'<path fill="{INK}" d="{words}"/>\n</svg>\n')


def main(folder: Path) -> None:
    bold, medium = Face("Roboto-Bold.ttf"), Face("Roboto-Medium.ttf")
    for code, colour, name in SCHEMES:
        (folder / f"{code}.svg").write_text(logo(code, colour, name, bold, medium), encoding="utf-8")


if __name__ == "__main__":
    main(Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent)
