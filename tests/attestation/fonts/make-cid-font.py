"""Makes a font whose glyphs have numbers (CIDs) from one whose glyphs have names.

Usage: make-cid-font.py SOURCE.otf OUTPUT.otf

The numbers have gaps and differ from the glyphs' indices. The scale is in the font dictionary, as in other fonts with
numbers. The source's Thai letters become ideographs, which no other font of the tests has: U+4E00 shows the glyph of
U+0E01, and so on. U+2F00 has the same glyph as U+4E00.
"""

import sys

from fontTools.cffLib import FDArrayIndex, FDSelect, FontDict
from fontTools.ttLib import TTFont

FAMILY = "Pelmora Numbered"


def number_glyphs(font: TTFont) -> None:
    top = font["CFF "].cff.topDictIndex[0]
    old_names, charstrings = font.getGlyphOrder(), top.CharStrings
    names = [".notdef"] + [f"cid{2000 + 7 * glyph:05}" for glyph in range(1, len(old_names))]
    programs = [charstrings[name] for name in old_names]

    part = FontDict()
    part.Private, part.FontMatrix = top.Private, top.FontMatrix
    top.ROS, top.CIDCount = ("Adobe", "Identity", 0), 65535
    top.FDArray, top.FDSelect = FDArrayIndex(), FDSelect()
    top.FDArray.append(part)
    top.FDSelect.format, top.FDSelect.gidArray = 3, [0] * len(names)
    for name in ("Private", "FontMatrix", "Encoding"):
        vars(top).pop(name, None)
        top.rawDict.pop(name, None)
    top.charset = names
    charstrings.fdArray, charstrings.fdSelect = top.FDArray, top.FDSelect
    charstrings.charStrings, charstrings.charStringsAreIndexed = dict(zip(names, programs)), 0

    advances, characters = font["hmtx"].metrics, font.getBestCmap()
    renamed = dict(zip(old_names, names))
    font["hmtx"].metrics = {renamed[name]: advance for name, advance in advances.items()}
    letters = {0x4E00 + code - 0x0E01: renamed[name] for code, name in characters.items() if 0x0E01 <= code < 0x0E2F}
    letters[0x2F00] = letters[0x4E00]
    for table in font["cmap"].tables:
        table.cmap = dict(letters)
    font.setGlyphOrder(names)


def main(source: str, output: str) -> None:
    font = TTFont(source, lazy=False, recalcTimestamp=False)
    for name in font.keys():
        if name != "GlyphOrder":
            font[name]
    for name in ("GSUB", "GPOS", "GDEF", "FFTM"):
        del font[name]
    number_glyphs(font)
    font["post"].formatType = 3
    font["name"].names = []
    for identity, text in {1: FAMILY, 4: FAMILY, 6: FAMILY.replace(" ", "")}.items():
        font["name"].setName(text, identity, 3, 1, 0x409)
    font.save(output)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
