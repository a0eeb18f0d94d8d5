"""The printed page is the shown card's: no other card replaces the card in the windows while a page is printed or a
card is read. Usage: test_whose_page.py STAGE FAKE_SERVICE DRAG_SOURCE"""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

import wayland
from bell import Bell
from cardservice import FakeService
from desktop import Application, Atspi, key, wait
from documents import words_of
from door import open_over_bus
from printserver import PrintServer
from statusitem import StatusBar
from windows import iconify, is_in_front, shown_windows

STAGE, FAKE_SERVICE, DRAG_SOURCE = sys.argv.pop(1), sys.argv.pop(1), sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
TITLE = "Pelmora par MORVEL"
VIEWER = "Alix SPECIMEN"
DIALOG = "Imprimer l’attestation – SPECIMEN Alix"
SEARCH = "Recherche des imprimantes…"
REFUSED_WHILE_PRINTING = ".*\nDemande refusée pendant l’impression.*"
REFUSED_WHILE_READING = ".*\nDemande refusée pendant la lecture d’une carte\\."
CARD_ENTRIES = ("Lecture de la carte Vitale", "Voir l'attestation", "Imprimer l'attestation",
                "Enregistrer l'attestation")


def lay_side_by_side():
    """The main window and the viewer, so that neither covers the other."""
    for title, x in ((VIEWER, 660), (TITLE, 0)):
        for window in shown_windows(title):
            subprocess.run(["xdotool", "windowmove", "--sync", window, str(x), "0"], check=True)


def drop(path, pelmora):
    """Drags the file onto the main window with the mouse. Whether the window took it."""
    with subprocess.Popen([DRAG_SOURCE, path], stdout=subprocess.PIPE, text=True,
                          env={**os.environ, "QT_QPA_PLATFORM": "xcb"}) as source:
        def mouse(*commands):
            subprocess.run(["xdotool", *commands], check=True)

        def said():
            return source.stdout.readline().strip()

        mouse("mousemove", *said().split(), "mousedown", "1")
        assert said() == "dragging"
        box = Atspi.Component.get_extents(pelmora.find("push button", "Lire"), Atspi.CoordType.SCREEN)
        mouse("mousemove", str(box.x + box.width // 2), str(box.y + box.height // 2), "mousemove_relative", "1", "1")
        is_accepted = said() == "accepts"
        mouse("mouseup", "1")
        while said() not in ("finished", "cancelled"):
            pass
        source.kill()
    return is_accepted


class Cards(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.in_reader = self.card("lecteur", "Alix")
        self.other = self.card("autre", "Ursule")

    def card(self, name, first_name):
        path = os.path.join(self.folder, name + ".xml")
        with open(SPECIMEN, encoding="utf-8") as specimen, open(path, "w", encoding="utf-8") as card:
            card.write(specimen.read().replace("Hélène", first_name))
        return path

    def start_again(self, *arguments):
        subprocess.run([PELMORA, *self.service, *arguments], check=True, timeout=10)

    def assert_refused(self, pelmora, action, reason):
        """The action is refused with a beep, where the desktop has one, and in words."""
        bell = None if wayland.HERE else Bell()
        action()
        if bell:
            wait(lambda: bell.count() > 0)
            bell.close()
        pelmora.find("label", reason)


class WhilePrinting(Cards):
    def setUp(self):
        super().setUp()
        self.service = [f"--simulate={self.in_reader}"]
        self.server = PrintServer().__enter__()
        self.addCleanup(self.server.__exit__)
        self.server.add_queue("queue")
        self.server.set_default("queue")

    def desk(self):
        return Application(PELMORA, *self.service, environment=self.server.environment())

    def view(self, pelmora):
        """Reads Alix' card and shows its attestation, then puts Ursule's card into the reader."""
        wait(lambda: pelmora.is_enabled("push button", "Voir"))
        pelmora.press("push button", "Voir")
        pelmora.find("frame", VIEWER)
        self.card("lecteur", "Ursule")
        wait(lambda: is_in_front(VIEWER))

    def page_words(self):
        """The words of the printed page."""
        job = self.server.wait_for_jobs("queue")[0]
        self.assertEqual(job.title, "Attestation de droits")
        return [word for word, _ in words_of(job.path)]

    def assert_all_show_alix(self, pelmora):
        pelmora.find("label", "SPECIMEN Alix\n.*")
        pelmora.find("label", "Nom de l'assuré : SPECIMEN Alix")
        self.assertIsNone(pelmora.find_now("label", ".*Ursule\n.*"))
        self.assertIsNone(pelmora.find_now("frame", "Ursule.*"))
        pelmora.find("dialog", DIALOG)

    def ways_in(self, item):
        """All ways to ask for another card or page from outside the windows."""
        yield "start", lambda: self.start_again(self.other)
        yield "bus", lambda: open_over_bus(self.other)
        for entry in CARD_ENTRIES:
            yield entry, lambda: item.choose(entry)

    def test_no_other_card_comes_in_while_the_dialog_is_open_and_its_page_comes_out(self):
        with StatusBar() as bar, self.desk() as pelmora:
            self.view(pelmora)
            lay_side_by_side()
            item = bar.item()
            key("ctrl+p")
            wait(lambda: is_in_front(DIALOG))
            for name, way in self.ways_in(item):
                with self.subTest(name):
                    self.assert_refused(pelmora, way, REFUSED_WHILE_PRINTING)
                    self.assert_all_show_alix(pelmora)
                    wait(lambda: is_in_front(DIALOG))
            # The windows' controls are blocked.
            self.assertFalse(drop(self.other, pelmora))
            pelmora.press("push button", "Lire")
            pelmora.click("push button", "Lire")
            wait(lambda: is_in_front(DIALOG))
            key("ctrl+o")
            key("ctrl+l")
            self.assert_all_show_alix(pelmora)
            self.assertIsNone(pelmora.find_now("dialog", "Sélectionnez un fichier XML"))

            key("Return")
            words = self.page_words()
            self.assertIn("Alix", words)
            self.assertNotIn("Ursule", words)
            # Afterwards cards are read as usual.
            pelmora.wait_until_gone("dialog", DIALOG)
            item.choose("Lecture de la carte Vitale")
            pelmora.find("label", "SPECIMEN Ursule\n.*")
            pelmora.find("frame", "Ursule SPECIMEN")
            self.assertTrue(drop(self.card("autre", "Alix"), pelmora))
            pelmora.find("label", "SPECIMEN Alix\n.*")
            pelmora.find("frame", VIEWER)

    def test_the_dialogs_page_comes_out_whoever_asks_for_another_card_and_then_the_viewer_follows(self):
        with self.desk() as pelmora:
            self.view(pelmora)
            key("ctrl+p")
            wait(lambda: is_in_front(DIALOG))
            for way in (lambda: self.start_again(self.other), lambda: open_over_bus(self.other),
                        lambda: pelmora.choose("Ouvrir un fichier de carte…")):
                self.assert_refused(pelmora, way, REFUSED_WHILE_PRINTING)
            pelmora.press("push button", "Lire")
            self.assert_all_show_alix(pelmora)
            wait(lambda: is_in_front(DIALOG))
            key("Return")
            self.assertIn("Alix", self.page_words())
            pelmora.wait_until_gone("dialog", DIALOG)
            pelmora.press("push button", "Lire")
            pelmora.find("label", "SPECIMEN Ursule\n.*")
            pelmora.find("frame", "Ursule SPECIMEN")

    def test_a_start_without_a_card_brings_the_dialog_to_the_front(self):
        with self.desk() as pelmora:
            self.view(pelmora)
            key("ctrl+p")
            wait(lambda: is_in_front(DIALOG))
            iconify(VIEWER)
            wait(lambda: not is_in_front(DIALOG))
            bell = Bell()
            self.addCleanup(bell.close)
            self.start_again()
            wait(lambda: is_in_front(DIALOG))
            self.assertTrue(shown_windows(VIEWER))
            self.assertEqual(bell.count(), 0)

    def test_no_other_card_comes_in_while_the_printers_are_searched(self):
        with StatusBar() as bar, self.desk() as pelmora:
            self.view(pelmora)
            item = bar.item()
            self.server.stall()
            key("ctrl+p")
            for way in (lambda: self.start_again(self.other), lambda: open_over_bus(self.other),
                        lambda: item.choose("Lecture de la carte Vitale"),
                        lambda: item.choose("Imprimer l'attestation")):
                self.assert_refused(pelmora, way, REFUSED_WHILE_PRINTING)
                pelmora.find("label", SEARCH)
            pelmora.find("label", "SPECIMEN Alix\n.*")
            pelmora.press("push button", "Annuler")
            pelmora.wait_until_gone("label", SEARCH)
            item.choose("Lecture de la carte Vitale")
            pelmora.find("label", "SPECIMEN Ursule\n.*")
            self.server.resume()
            key("ctrl+p")
            pelmora.find("dialog", DIALOG.replace("Alix", "Ursule"))
            self.assertEqual(self.server.jobs("queue"), [])

    def test_the_application_can_be_left_from_the_status_bar_while_the_dialog_is_open(self):
        with StatusBar() as bar, self.desk() as pelmora:
            self.view(pelmora)
            key("ctrl+p")
            wait(lambda: is_in_front(DIALOG))
            bar.item().choose("Quitter Pelmora")
            self.assertEqual(pelmora.process.wait(timeout=10), 0)


class WhileReading(Cards):
    def desk(self):
        """Its reader never answers."""
        self.service = ["--card-service",
                        FakeService(self.folder, FAKE_SERVICE).doing("vitale_read", "silent").path]
        return Application(PELMORA, *self.service, self.in_reader)

    def view_and_read(self, pelmora):
        pelmora.find("label", "SPECIMEN Alix\n.*")
        wait(lambda: pelmora.is_enabled("push button", "Voir"))
        pelmora.press("push button", "Voir")
        pelmora.find("frame", VIEWER)
        pelmora.press("push button", "Lire")
        pelmora.find("label", r"Lecture de la carte Vitale\.\.\.")

    def test_no_file_takes_the_place_of_a_card_that_is_read_and_nothing_is_printed(self):
        with self.desk() as pelmora:
            self.view_and_read(pelmora)
            for way in (lambda: self.start_again(self.other), lambda: open_over_bus(self.other),
                        # The viewer is not blocked.
                        lambda: pelmora.press_inside(("frame", VIEWER), "Imprimer")):
                self.assert_refused(pelmora, way, REFUSED_WHILE_READING)
            pelmora.find("label", "SPECIMEN Alix\n.*")
            self.assertIsNone(pelmora.find_now("dialog", "Imprimer.*"))

    def test_nothing_can_be_dropped_while_a_card_is_read(self):
        with self.desk() as pelmora:
            self.view_and_read(pelmora)
            lay_side_by_side()
            self.assertFalse(drop(self.other, pelmora))
            pelmora.find("label", "SPECIMEN Alix\n.*")


if __name__ == "__main__":
    unittest.main()
