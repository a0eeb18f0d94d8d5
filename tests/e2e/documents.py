"""Reads PDF documents: pages, texts with positions, painted areas."""

import re
import subprocess

DOTS_PER_POINT = 4
TOLERANCE = 0.5  # points


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True).stdout


def sheet_of(path):
    """Number of pages, and width and height of the page in points."""
    info = output_of("pdfinfo", path).decode()
    pages = int(re.search(r"^Pages: +(\d+)", info, re.MULTILINE)[1])
    width, height = re.search(r"^Page size: +([\d.]+) x ([\d.]+)", info, re.MULTILINE).groups()
    return pages, float(width), float(height)


def words_of(path):
    """The words and their boxes (left, top, right, bottom) in points, in the document's order."""
    text = output_of("pdftotext", "-bbox", path, "-").decode()
    found = re.findall(r'<word xMin="([-\d.]+)" yMin="([-\d.]+)" xMax="([-\d.]+)" yMax="([-\d.]+)">(.*?)</word>', text)
    return [(word, tuple(float(value) for value in box)) for *box, word in found]


def pixels_of(path):
    """Width, height and rows of the rendered page, three bytes a pixel."""
    image = output_of("pdftoppm", "-r", str(72 * DOTS_PER_POINT), path)
    header = re.match(rb"P6\s+(\d+)\s+(\d+)\s+255\s", image)
    width, height = int(header[1]), int(header[2])
    rows = [image[header.end() + row * width * 3:header.end() + (row + 1) * width * 3] for row in range(height)]
    return width, height, rows


def ink_box(path):
    """The box around all that is not white, in points."""
    width, _, rows = pixels_of(path)
    marked = [index for index, row in enumerate(rows) if row.strip(b"\xff")]
    left = min((width * 3 - len(rows[index].lstrip(b"\xff"))) // 3 for index in marked)
    right = max((len(rows[index].rstrip(b"\xff")) + 2) // 3 for index in marked)
    return tuple(value / DOTS_PER_POINT for value in (left, marked[0], right, marked[-1] + 1))


def colours_in(path, box):
    """The colours inside a box, as a set of three bytes each."""
    _, _, rows = pixels_of(path)
    left, top, right, bottom = (int(value * DOTS_PER_POINT) for value in box)
    return {row[pixel * 3:pixel * 3 + 3] for row in rows[top:bottom] for pixel in range(left, right)}


class Placed:
    """The expected position of the attestation's page on a sheet. The page is centred, and scaled down to fit, never
    up. It is turned if the sheet is fed in portrait and read in landscape."""

    PAGE = (595, 842)

    def __init__(self, width, height, turned=False):
        self.sheet = (height, width) if turned else (width, height)
        self.turned = turned
        self.scale = min(1, *(room / page for room, page in zip(self.sheet, self.PAGE)))
        self.origin = [(room - page * self.scale) / 2 for room, page in zip(self.sheet, self.PAGE)]

    def box(self, box):
        left, top, right, bottom = (self.origin[index % 2] + value * self.scale for index, value in enumerate(box))
        if self.turned:
            return (self.sheet[1] - bottom, left, self.sheet[1] - top, right)
        return (left, top, right, bottom)


def assert_words_placed(test, path, original, placed):
    """Every word of the original document lies where it should."""
    def in_order(words):
        return sorted(words, key=lambda word: (word[0], *(round(value) for value in word[1])))
    expected = in_order((word, placed.box(box)) for word, box in words_of(original))
    found = in_order(words_of(path))
    test.assertEqual([word for word, _ in found], [word for word, _ in expected])
    for (word, box), (_, wanted) in zip(found, expected):
        for value, target in zip(box, wanted):
            test.assertAlmostEqual(value, target, delta=TOLERANCE, msg=word)
