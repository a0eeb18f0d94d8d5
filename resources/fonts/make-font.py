"""Cuts one face of the page's font from a Debian font file: make-font.py SOURCE.ttf STYLE OUTPUT.ttf

The page is set in one family on every machine. It gets a name of its own so that no installed font of the same name can
take its place, and only what French paperwork needs: Latin with its extensions, Greek, Cyrillic, punctuation, currency.
Layout tables go because ligatures and alternates spoil the text that is read back from a PDF; hints go because the page
is never hinted. The same input gives the same bytes.
"""

import sys

from fontTools import subset
from fontTools.ttLib import TTFont

FAMILY = "Pelmora Sans"

RANGES = [
    (0x0020, 0x007E),  # Basic Latin
    (0x00A0, 0x02AF),  # Latin-1, Latin Extended-A and -B, IPA letters
    (0x02B0, 0x036F),  # modifier letters, combining marks
    (0x0370, 0x052F),  # Greek, Cyrillic
    (0x1E00, 0x1FFF),  # Latin Extended Additional (Vietnamese), Greek Extended
    (0x2000, 0x206F),  # General Punctuation
    (0x2070, 0x209F),  # superscripts and subscripts
    (0x20A0, 0x20CF),  # currency
    (0x2100, 0x214F),  # letter-like symbols: numero, trade mark
    (0xFFFD, 0xFFFD),  # replacement character
]

# Copyright and licence travel with the font; the names of the original are not ours to keep.
KEPT_NAMES = {0, 8, 9, 13, 14}


def rename(font: TTFont, style: str) -> None:
    names = font["name"]
    version = names.getDebugName(5)
    names.names = [record for record in names.names if record.nameID in KEPT_NAMES and record.platformID == 3]
    texts = {
        1: FAMILY,
        2: style,
        3: f"{FAMILY} {style}; {version}",
        4: f"{FAMILY} {style}",
        5: version,
        6: f"{FAMILY.replace(' ', '')}-{style}",
        10: f"Cut from Roboto {style} for Pelmora: fewer characters, no layout tables, no hints, one line height, renamed.",
    }
    for name_id, text in texts.items():
        names.setName(text, name_id, 3, 1, 0x409)


def unify_line_metrics(font: TTFont) -> None:
    """One height of line, whichever table a reader takes it from: the tables of the original disagree."""
    lines, windows = font["hhea"], font["OS/2"]
    windows.sTypoAscender = windows.usWinAscent = lines.ascent
    windows.sTypoDescender, windows.usWinDescent = lines.descent, -lines.descent
    windows.sTypoLineGap = lines.lineGap


def main(source: str, style: str, output: str) -> None:
    options = subset.Options()
    options.layout_features = []
    options.drop_tables += ["GSUB", "GPOS", "GDEF", "kern", "DSIG"]
    options.hinting = False
    options.name_IDs = ["*"]
    options.glyph_names = False
    options.notdef_outline = True
    options.recalc_timestamp = False

    font = subset.load_font(source, options)
    subsetter = subset.Subsetter(options)
    subsetter.populate(unicodes=[code for first, last in RANGES for code in range(first, last + 1)])
    subsetter.subset(font)
    unify_line_metrics(font)
    rename(font, style)
    subset.save_font(font, output, options)


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
