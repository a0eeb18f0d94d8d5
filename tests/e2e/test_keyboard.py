"""The application by the keyboard alone, from each of its windows. Usage: test_keyboard.py STAGE"""

import os
import shutil
import sys
import tempfile
import unittest
from urllib.parse import unquote

from desktop import Application, Opener, key, wait
from printserver import PrintServer
from windows import is_in_front

STAGE = sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
MAIN = "Pelmora par MORVEL"
PREFERENCES = "Préférences Pelmora"
PANES = {"Configuration": ("check box", "Afficher le menu Pelmora"), "Attestations": ("check box", "Afficher le titre")}
SAVED = "Enregistrement de l'attestation"


class Keyboard(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.card = os.path.join(self.folder, "carte.xml")
        self.opener = Opener(self.folder)
        self.server = PrintServer().__enter__()
        self.addCleanup(self.server.__exit__)
        self.server.add_queue("A4")
        self.server.set_default("A4")
        self.insert("Zoé")
        self.pelmora = Application(PELMORA, f"--simulate={self.card}",
                                   environment={**self.server.environment(), **self.opener.environment})
        self.addCleanup(self.pelmora.__exit__)
        wait(lambda: self.pelmora.is_enabled("push button", "Voir"))
        self.press(MAIN, "ctrl+l")
        self.pelmora.find("label", "SPECIMEN Zoé\n.*")

    def insert(self, first_name):
        """Puts the card of another person into the reader."""
        with open(SPECIMEN, encoding="utf-8") as file, open(self.card, "w", encoding="utf-8") as card:
            card.write(file.read().replace("Hélène", first_name))

    @staticmethod
    def press(title, *keys):
        """Presses keys when the window has the focus."""
        wait(lambda: is_in_front(title))
        key(*keys)

    def opened(self, count):
        wait(lambda: len(self.opener.opened()) == count)
        return unquote(self.opener.opened()[-1])

    def work_from(self, window, come_back):
        """Does all the work from the window; come_back gives the window the focus again."""
        self.insert("Marie")
        self.press(window(), "ctrl+l")
        self.pelmora.find("label", "SPECIMEN Marie\n.*")
        come_back()
        self.press(window(), "ctrl+shift+c")
        self.pelmora.find("label", r".*\nNuméro copié pour une minute\.")
        self.press(window(), "ctrl+shift+n")
        self.pelmora.find("label", r".*\nNom copié pour une minute\.")
        self.press(window(), "ctrl+s")
        self.pelmora.find("alert", SAVED)
        self.press(SAVED, "Return")
        self.pelmora.wait_until_gone("alert", SAVED)
        folder = os.path.join(self.pelmora.home, "Documents", "Attestations Pelmora")
        self.assertEqual(os.listdir(folder), ["SPECIMEN Marie.pdf"])
        come_back()
        self.press(window(), "ctrl+p")
        self.press("Imprimer l’attestation – SPECIMEN Marie", "Return")
        self.server.wait_for_jobs("A4")
        come_back()
        self.press(window(), "ctrl+shift+o")
        self.assertEqual(self.opened(1), f"file://{folder}")
        self.press(window(), "F1")
        self.assertRegex(self.opened(2), "/Help.html$")
        self.press(window(), "ctrl+comma")
        self.press(PREFERENCES, "ctrl+Tab")
        self.pelmora.find(*PANES["Attestations"])
        self.press(PREFERENCES, "ctrl+shift+Tab")
        self.pelmora.find(*PANES["Configuration"])
        come_back()
        self.press(window(), "ctrl+shift+p")
        wait(lambda: is_in_front("Marie SPECIMEN"))
        come_back()
        self.press(window(), "ctrl+q")
        self.assertEqual(self.pelmora.process.wait(timeout=5), 0)

    def close_others(self):
        for title in ("Marie SPECIMEN", "Zoé SPECIMEN", PREFERENCES):
            if is_in_front(title):
                key("Escape")
        wait(lambda: is_in_front(MAIN))

    def test_the_main_window(self):
        self.work_from(lambda: MAIN, self.close_others)

    def test_the_attestation(self):
        self.press(MAIN, "ctrl+shift+p")
        wait(lambda: is_in_front("Zoé SPECIMEN"))

        def shown():
            return next(title for title in ("Zoé SPECIMEN", "Marie SPECIMEN") if self.pelmora.find_now("frame", title))

        def come_back():
            key("ctrl+shift+p")
            wait(lambda: is_in_front(shown()))
        self.work_from(shown, come_back)

    def test_the_preferences(self):
        self.press(MAIN, "ctrl+comma")

        def come_back():
            key("ctrl+comma")
            wait(lambda: is_in_front(PREFERENCES))
        self.work_from(lambda: PREFERENCES, come_back)


if __name__ == "__main__":
    unittest.main()
