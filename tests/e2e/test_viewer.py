"""The attestation's window: its appearance, its accessibility and its keys. Usage: test_viewer.py VIEWER CARD"""

import collections
import os
import re
import subprocess
import sys
import tempfile
import unittest

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

from desktop import Application, key, wait, walk
from windows import shown_windows, wait_until_shown

CARD = sys.argv.pop()
VIEWER = sys.argv.pop()

Box = collections.namedtuple("Box", "x y width height")

PAGE = (595, 842)
SCREEN = (1280, 1024)
AIR = 20  # points around the page, in each direction
DARK = """[Colors:Window]
BackgroundNormal=35,38,41
ForegroundNormal=252,252,252
[Colors:View]
BackgroundNormal=27,30,32
ForegroundNormal=252,252,252
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
"""


class Viewer(Application):
    """The viewer on a card, in its window."""

    def __init__(self, card=CARD, title="Hélène SPECIMEN", **options):
        super().__init__(VIEWER, card, stdin=subprocess.PIPE, **options)
        wait_until_shown(title)
        self.window = shown_windows(title)[0]

    def __exit__(self, *details):
        self.process.stdin.close()
        super().__exit__(*details)

    def show(self, card):
        self.process.stdin.write(card.encode() + b"\n")
        self.process.stdin.flush()

    def resize(self, width, height):
        """Gives the window's content, below the bar, that size."""
        bar = box_of(self.find("tool bar", ".*"))
        subprocess.run(["xdotool", "windowsize", self.window, str(width), str(height + bar.height)], check=True)

    def content(self):
        frame = self.find("frame", ".*")
        whole = box_of(frame)
        bar = box_of(self.find("tool bar", ".*"))
        return Box(whole.x, whole.y + bar.height, whole.width, whole.height - bar.height)

    def page(self):
        return self.find("document frame", "Attestation")

    def page_in(self, width, height):
        """Where the page is in a content of that size, once it is there."""
        self.resize(width, height)

        def settled():
            content, page = self.content(), box_of(self.page())
            scale = min(1, width / (PAGE[0] + AIR), height / (PAGE[1] + AIR))
            # The page's box includes every pixel that the page touches.
            near = all(0 <= seen - scale * points < 2 for seen, points in zip(page[2:], PAGE))
            return (content, page) if content[2:] == (width, height) and near else None
        try:
            content, page = wait(settled, 5)
        except AssertionError:
            raise AssertionError(f"content {self.content()}, page {box_of(self.page())}") from None
        return Box(page.x - content.x, page.y - content.y, page.width, page.height)


def box_of(node):
    box = Atspi.Component.get_extents(node, Atspi.CoordType.SCREEN)
    return Box(box.x, box.y, box.width, box.height)


def children_of(node):
    return [node.get_child_at_index(index) for index in range(node.get_child_count())]


def names_of(nodes):
    return [node.get_name() for node in nodes]


def rows_of(table):
    return [[table.get_accessible_at(row, column).get_name() for column in range(table.get_n_columns())]
            for row in range(table.get_n_rows())]


def screen(box, path):
    subprocess.run(["import", "-window", "root", "-crop", f"{box.width}x{box.height}+{box.x}+{box.y}", "+repage",
                    "-depth", "8", path], check=True)


def pixels(box):
    """That part of the screen, as rows of three bytes a pixel."""
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "screen.ppm")
        screen(box, path)
        with open(path, "rb") as file:
            data = file.read()
    return data[len(data) - 3 * box.width * box.height:]


def card_of(folder, **fields):
    """The specimen card with other contents in the first fields of these names."""
    with open(CARD, encoding="utf-8") as file:
        card = file.read()
    for name, text in fields.items():
        card = re.sub(f"<{name}>.*?</{name}>", f"<{name}>{text}</{name}>", card, count=1)
    path = os.path.join(folder, "-".join(fields.values()) + ".xml")
    with open(path, "w", encoding="utf-8") as file:
        file.write(card)
    return path


class Looking(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.viewer = Viewer()

    @classmethod
    def tearDownClass(cls):
        cls.viewer.__exit__()

    def assert_centred(self, page, width, height):
        right, below = width - page.x - page.width, height - page.y - page.height
        # Rounded to whole points.
        self.assertLessEqual(abs(page.x - right), 2, page)
        self.assertLessEqual(abs(page.y - below), 2, page)

    def test_the_window_opens_in_the_middle_of_the_screen_with_the_page_one_to_one(self):
        with Viewer() as viewer:
            self.assertEqual(wait(lambda: viewer.content()[2:] == (615, 862) and viewer.content()[2:]), (615, 862))
            content, page, bar = viewer.content(), box_of(viewer.page()), box_of(viewer.find("tool bar", ".*"))
            self.assertEqual((page.x - content.x, page.y - content.y, *page[2:]), (10, 10, *PAGE))
            self.assertLessEqual(abs(content.x + content.width / 2 - SCREEN[0] / 2), 5)
            # The title bar counts, too. The window manager decides its height.
            self.assertLessEqual(abs(bar.y + (content.height + bar.height) / 2 - SCREEN[1] / 2), 30)

    def test_a_window_of_the_pages_size_shows_it_one_to_one(self):
        self.assertEqual(self.viewer.page_in(615, 862), (10, 10, 595, 842))

    def test_a_larger_window_shows_it_one_to_one_in_the_middle(self):
        self.assertEqual(self.viewer.page_in(1001, 900), (203, 29, 595, 842))
        self.assertEqual(self.viewer.page_in(615, 900), (10, 29, 595, 842))
        self.assertEqual(self.viewer.page_in(900, 862), (153, 10, 595, 842))

    def test_a_narrow_window_scales_by_its_width_alone(self):
        page = self.viewer.page_in(410, 900)
        self.assert_centred(page, 410, 900)
        self.assertLess(abs(page.width - 595 * 410 / 615), 2)

    def test_a_low_window_scales_by_its_height_alone(self):
        page = self.viewer.page_in(1000, 431)
        self.assert_centred(page, 1000, 431)
        self.assertLess(abs(page.height - 842 / 2), 2)

    def test_a_small_window_scales_by_the_smaller_of_the_two(self):
        self.assert_centred(self.viewer.page_in(400, 300), 400, 300)
        self.assert_centred(self.viewer.page_in(200, 800), 200, 800)

    def test_the_page_comes_back_to_exactly_its_size(self):
        before = self.viewer.page_in(700, 900)
        with_page = pixels(box_of(self.viewer.page()))
        self.viewer.page_in(233, 177)
        self.assertEqual(self.viewer.page_in(700, 900), before)
        wait(lambda: pixels(box_of(self.viewer.page())) == with_page)

    def test_the_page_is_white_with_a_grey_border(self):
        self.viewer.page_in(800, 900)
        page = box_of(self.viewer.page())

        def border_is_seen():
            seen = pixels(page)
            row = [tuple(seen[at:at + 3]) for at in range(0, 3 * page.width, 3)]
            inside = [tuple(seen[at:at + 3]) for at in range(3 * page.width * 2, 3 * page.width * 3, 3)]
            return (all(level[0] == level[1] == level[2] < 200 for level in row)
                    and set(inside[1:-1]) == {(255, 255, 255)} and inside[0][0] < 200 and inside[-1][0] < 200)
        wait(border_is_seen)


class DarkTheme(unittest.TestCase):
    def page_and_surroundings(self, **options):
        with Viewer(**options) as viewer:
            viewer.page_in(700, 900)
            page = box_of(viewer.page())
            corner = Box(page.x - 40, page.y, 1, 1)

            def painted():
                seen = pixels(page)
                return (seen, pixels(corner)) if seen.count(b"\xff\xff\xff") > 100000 else None
            return wait(painted)

    def test_the_page_stays_as_it_is_and_the_desktops_colour_is_around_it(self):
        page, around = self.page_and_surroundings()
        with tempfile.TemporaryDirectory() as home:
            os.mkdir(os.path.join(home, "config"))
            with open(os.path.join(home, "config", "kdeglobals"), "w", encoding="utf-8") as file:
                file.write(DARK)
            dark_page, dark_around = self.page_and_surroundings(
                home=home, environment={"XDG_CURRENT_DESKTOP": "KDE", "KDE_SESSION_VERSION": "5"})
        self.assertEqual(dark_page, page)
        self.assertGreater(around[0], 200)
        self.assertLess(dark_around[0], 80)


class Listening(unittest.TestCase):
    def test_the_title_has_the_first_name_first_and_the_page_the_surname(self):
        with tempfile.TemporaryDirectory() as folder:
            with Viewer(card_of(folder, nomUsuel="Martin", prenomUsuel="Marie"), "Marie Martin") as viewer:
                viewer.find("label", "Nom de l'assuré : Martin Marie")
                viewer.find("table cell", "Martin Marie")

    def test_the_page_is_read_in_order(self):
        with Viewer() as viewer:
            page = viewer.page()
            self.assertEqual([node.get_role_name() for node in children_of(page)],
                             ["image"] + ["label"] * 3 + ["table"] * 2)
            self.assertEqual(names_of(children_of(page)[:4]),
                             ["Régime général", "Non spécifié", "Numero de l'assuré : 2 85 05 75 116 123 81",
                              "Nom de l'assuré : SPECIMEN Hélène"])

    def test_the_tables_have_rows_columns_and_titles(self):
        with Viewer() as viewer:
            organism, people = children_of(viewer.page())[-2:]
            self.assertEqual(rows_of(organism), [["01 751 8801", "10", "2 85 05 75 116 123 81", ""]])
            self.assertEqual(rows_of(people)[:2],
                             [["SPECIMEN Hélène", "2 85 05 75 116 123 81", "14/05/1985", "1"],
                              ["SPECIMEN François", "1 83 11 69 123 456 41", "02/11/1983", "1"]])
            self.assertEqual([people.get_column_description(column) for column in range(4)],
                             ["Bénéficiaire(s) nom de famille suivi d'un éventuel nom d'usage",
                              "n° de sécurité sociale du bénéficiaire (pour information)",
                              "né(e) le / Rang", "né(e) le / Rang"])
            self.assertEqual(people.get_column_header(3).get_name(), "né(e) le / Rang")
            self.assertEqual(people.get_column_header(3).get_role_name(), "table column header")

    def test_a_tables_children_are_told_by_row_and_column(self):
        with Viewer() as viewer:
            table = children_of(viewer.page())[-1]
            cell = table.get_accessible_at(1, 2)
            index = table.get_index_at(1, 2)
            self.assertEqual(table.get_child_at_index(index).get_name(), cell.get_name())
            self.assertEqual((table.get_row_at_index(index), table.get_column_at_index(index)), (1, 2))
            # A column's title is in no row.
            self.assertEqual(table.get_row_at_index(0), -1)

    def test_parts_are_where_they_are_seen_at_every_scale(self):
        with Viewer() as viewer:
            for width, height in ((700, 900), (400, 500)):
                viewer.page_in(width, height)
                page = box_of(viewer.page())
                scale = page.width / PAGE[0]
                cell = box_of(children_of(viewer.page())[-1].get_accessible_at(1, 1))
                expected = (293.5 * scale + page.x, 395.5 * scale + page.y, 180 * scale, 40 * scale)
                for seen, points in zip(cell, expected):
                    self.assertLessEqual(abs(seen - points), 2.5, (cell, expected))

    def test_another_card_is_read_in_the_place_of_the_last(self):
        with tempfile.TemporaryDirectory() as folder, Viewer() as viewer:
            # Screen readers keep the page that they have read until they are notified of a change.
            old = names_of(walk(viewer.page()))
            self.assertIn("SPECIMEN Hélène", old)
            viewer.show(card_of(folder, prenomUsuel="Aliénor"))
            viewer.find("frame", "Aliénor SPECIMEN")
            viewer.find("label", "Nom de l'assuré : SPECIMEN Aliénor")
            viewer.wait_until_gone("table cell", "SPECIMEN Hélène")
            new = names_of(walk(viewer.page()))
            self.assertEqual([name.replace("Aliénor", "Hélène") for name in new], old)


class Typing(unittest.TestCase):
    def test_keys_close_the_window_and_another_card_brings_it_back(self):
        with Viewer() as viewer:
            for keys in ("ctrl+w", "Escape"):
                wait(lambda: viewer.page().get_state_set().contains(Atspi.StateType.FOCUSED))
                key(keys)
                wait(lambda: not shown_windows("Hélène SPECIMEN"))
                self.assertIsNone(viewer.process.poll())
                viewer.show(CARD)
                wait(lambda: shown_windows("Hélène SPECIMEN"))

    def test_the_bar_closes_the_window_too(self):
        with Viewer() as viewer:
            viewer.press("push button", "Fermer")
            wait(lambda: not shown_windows("Hélène SPECIMEN"))

    def test_keys_open_the_print_dialog_on_the_window(self):
        with tempfile.TemporaryDirectory() as empty, \
                Viewer(environment={"CUPS_SERVER": os.path.join(empty, "cups.sock")}) as viewer:
            wait(lambda: viewer.page().get_state_set().contains(Atspi.StateType.FOCUSED))
            key("ctrl+p")
            wait(lambda: viewer.find_now("dialog", "Imprimer l’attestation – .*") or viewer.find_now("alert", ".*"))


if __name__ == "__main__":
    unittest.main()
