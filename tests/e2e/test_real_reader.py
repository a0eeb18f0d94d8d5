"""The application with a reader and a card, and no simulation. Usage: test_real_reader.py STAGE, in a network and a desktop
of its own"""

import os
import subprocess
import sys
import tempfile
import time
import unittest

from desktop import Application, wait
from pcsc import MODEL, OtherProgram, PcscService, Reader
from service import CardService
from specimencard import SUMMARY, read_card

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes"))
from virtualcard import VirtualCard, be_mute, remove  # noqa: E402

STAGE = sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
TITLE = "Pelmora par MORVEL"
VIEWER = "Hélène SPECIMEN"
READ_ERROR = r"Erreur de lecture de la carte Vitale\..*"
ABSENT = r"La carte vitale n'est pas dans le lecteur\."
READER_ERROR = r"Erreur lecteur\. Vérifiez les branchements du lecteur\."
NO_READER = r"Aucun lecteur de carte n'a été trouvé\. Vérifiez les branchements\."
EMPTY = r"Insérez une carte, puis appuyez sur Lire\."
PRESENT = r"Carte présente – appuyez sur Lire\."
NO_SERVICE = "Le service des lecteurs \\(pcscd\\) ne répond pas\u00A0: faites-le démarrer\\."
READ_AT = r"Lue le \d\d/\d\d/\d{4} à \d\d:\d\d"
SYSTEM_NAME = MODEL + " 00 00"
# Seconds that a read may take, and seconds until its end is shown.
DEADLINE, MARGIN = 20, 5


class RealReader(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory())
        self.reader = Reader()
        self.pcsc = self.enterContext(PcscService(self.reader))

    def inserted(self, card=None):
        card = self.enterContext(card or VirtualCard.specimen(SPECIMEN))
        card.insert(self.reader.port)
        return card

    def start(self, **settings):
        """The application with these settings and its window up."""
        home = os.path.join(self.folder, "home")
        os.makedirs(os.path.join(home, "config", "MORVEL"))
        with open(os.path.join(home, "config", "MORVEL", "Pelmora.conf"), "w", encoding="utf-8") as file:
            file.write("[General]\n" + "".join(f"{key}={value}\n" for key, value in settings.items()))
        pelmora = Application(PELMORA, home=home, environment=self.pcsc.environment())
        self.addCleanup(pelmora.__exit__)
        pelmora.find("frame", TITLE)
        return pelmora

    def start_bound(self):
        pelmora = self.start()
        wait(lambda: pelmora.is_enabled("push button", "Voir"))
        return pelmora

    def assert_alert(self, pelmora, text):
        pelmora.find("label", text)
        pelmora.press("push button", "OK")
        pelmora.wait_until_gone("alert", ".*")

    def saved(self, name, *arguments):
        """The texts of the attestation that a run without a window writes."""
        folder = os.path.join(self.folder, name)
        environment = {"HOME": self.folder, "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8",
                       "XDG_RUNTIME_DIR": self.folder, **self.pcsc.environment()}
        result = subprocess.run([PELMORA, "--save", folder, *arguments], env=environment, capture_output=True, text=True,
                                timeout=60)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        path, = result.stdout.splitlines()
        return os.path.basename(path), subprocess.run(["pdftotext", "-layout", path, "-"], capture_output=True,
                                                      check=True).stdout

    def test_the_panel_tells_what_the_reader_holds(self):
        pelmora = self.start_bound()
        watch = self.enterContext(OtherProgram(self.pcsc, "watch", SYSTEM_NAME))
        pelmora.find("label", EMPTY)
        card = self.inserted()
        watch.expect("present")
        pelmora.find("label", PRESENT)
        read_card(pelmora)
        pelmora.find("label", READ_AT)
        card.remove()
        watch.expect("empty")
        other = self.inserted()
        pelmora.find("label", f"{READ_AT}\\. {PRESENT}")
        other.remove()
        pelmora.find("label", READ_AT)
        self.pcsc.stop()
        pelmora.find("label", f"{READ_AT}\\. {NO_SERVICE}")
        self.pcsc.start()
        pelmora.find("label", READ_AT)

    def test_without_a_pcsc_service_the_panel_and_the_tiles_say_so_until_it_starts(self):
        self.pcsc.stop()
        pelmora = self.start()
        self.assert_alert(pelmora, NO_READER)
        pelmora.find("label", NO_SERVICE)
        self.pcsc.start()
        pelmora.find("label", EMPTY)
        self.inserted()
        pelmora.find("label", PRESENT)
        read_card(pelmora)

    def test_an_inserted_card_is_read_and_forgotten_by_itself_if_the_user_wants_that(self):
        here = self.inserted()
        pelmora = self.start(MVReadOnInsertion="true", MVForgetOnRemoval="true")
        watch = self.enterContext(OtherProgram(self.pcsc, "watch", SYSTEM_NAME))
        # A card that was there before the start is not read.
        pelmora.find("label", PRESENT)
        here.remove()
        watch.expect("empty")
        pelmora.find("label", EMPTY)
        for _ in range(2):
            card = self.inserted()
            watch.expect("present")
            pelmora.find("label", SUMMARY)
            pelmora.press("push button", "Voir")
            pelmora.find("frame", VIEWER)
            card.remove()
            watch.expect("empty")
            pelmora.find("label", "Aucune")
            pelmora.find("label", EMPTY)
            pelmora.wait_until_gone("frame", VIEWER)

    def test_nothing_is_done_while_nothing_happens(self):
        pelmora = self.start_bound()
        pelmora.find("label", EMPTY)
        processes = [pelmora.process.pid, *pelmora.children()]
        # The window has drawn what it shows, and the watch of the reader is quiet.
        time.sleep(2)
        before = sum(CardService.time_of(process) for process in processes)
        time.sleep(5)
        self.assertLess(sum(CardService.time_of(process) for process in processes) - before, 0.05)

    def test_an_attestation_is_the_same_as_with_the_simulated_card(self):
        card = self.inserted()
        from_the_reader = self.saved("reader")
        self.assertTrue(card.commands)
        count = len(card.commands)
        simulated = self.saved("simulated", "--simulate")
        self.assertEqual(len(card.commands), count)
        self.assertIn("SPECIMEN", simulated[1].decode())
        self.assertEqual(from_the_reader, simulated)

    def test_the_card_in_the_reader_is_read_and_looked_at(self):
        self.inserted()
        pelmora = self.start_bound()
        read_card(pelmora)
        pelmora.press("push button", "Voir")
        pelmora.find("frame", "Hélène SPECIMEN")
        pelmora.find("label", "Nom de l'assuré : SPECIMEN Hélène")

    def test_a_card_that_is_not_there_or_leaves_is_told_and_the_next_one_is_read(self):
        pelmora = self.start_bound()
        pelmora.press("push button", "Lire")
        self.assert_alert(pelmora, ABSENT)
        card = VirtualCard.specimen(SPECIMEN)
        card.before = {10: remove}
        watch = self.enterContext(OtherProgram(self.pcsc, "watch", SYSTEM_NAME))
        self.inserted(card)
        watch.expect("present")
        pelmora.press("push button", "Lire")
        self.assert_alert(pelmora, READ_ERROR)
        watch.expect("empty")
        self.inserted()
        read_card(pelmora)

    def test_a_pcsc_service_that_is_started_late_or_anew_is_found(self):
        self.pcsc.stop()
        pelmora = self.start()
        # The error's text, and the actual reason below it.
        pelmora.find("label", r"Le service des lecteurs de cartes \(PC/SC\) ne répond pas.*")
        self.assert_alert(pelmora, NO_READER)
        self.pcsc.start()
        self.inserted()
        read_card(pelmora)
        self.pcsc.kill()
        self.pcsc.start()
        self.inserted()
        read_card(pelmora)

    def test_a_card_that_another_program_keeps_is_told_in_words(self):
        self.inserted()
        pelmora = self.start_bound()
        read_card(pelmora)
        with OtherProgram(self.pcsc, "exclusive", SYSTEM_NAME):
            pelmora.press("push button", "Lire")
            pelmora.find("label", r"Un autre programme se sert de la carte.*")
            self.assert_alert(pelmora, READER_ERROR)
        read_card(pelmora)

    def test_a_card_that_falls_silent_is_told_in_time_and_the_next_one_is_read(self):
        card = VirtualCard.specimen(SPECIMEN)
        card.before = {10: be_mute}
        watch = self.enterContext(OtherProgram(self.pcsc, "watch", SYSTEM_NAME))
        self.inserted(card)
        watch.expect("present")
        pelmora = self.start_bound()
        first, = pelmora.children()
        start = time.monotonic()
        pelmora.press("push button", "Lire")
        pelmora.find("label", r"Lecture de la carte Vitale\.\.\.")
        # The window responds meanwhile.
        pelmora.find("label", ".*tarde.*")
        wait(lambda: pelmora.find_now("label", READ_ERROR), seconds=DEADLINE + MARGIN)
        self.assertLess(time.monotonic() - start, DEADLINE + MARGIN)
        self.assert_alert(pelmora, READ_ERROR)
        # Waits until PC/SC has noticed the removal.
        card.remove()
        watch.expect("empty")
        self.inserted()
        read_card(pelmora)
        second, = pelmora.children()
        self.assertNotEqual(second, first)


if __name__ == "__main__":
    unittest.main()
