"""Printing from windows, to a print server of the test's own. Usage: test_print_dialog.py STAGE"""

import os
import stat
import subprocess
import sys
import tempfile
import unittest

from desktop import Atspi, wait
from documents import Placed, assert_words_placed, sheet_of
from printingdesk import DIALOG, PELMORA, SPECIMEN, VIEWER, Desk, key_in
from printserver import PrintServer

FOLDER = os.path.join("Documents", "Attestations Pelmora")
FILE = "SPECIMEN Hélène.pdf"

# Each with the place of the page on its sheets.
QUEUES = {"A4": Placed(595, 842), "A5": Placed(420, 595), "Letter": Placed(612, 792), "margins": Placed(595, 842),
          "across": Placed(595, 842, turned=True)}


def write_settings(home, *lines):
    folder = os.path.join(home, "config", "MORVEL")
    os.makedirs(folder)
    with open(os.path.join(folder, "Pelmora.conf"), "w", encoding="utf-8") as file:
        file.write("\n".join(["[General]", *lines, ""]))


def resize(title, width, height):
    subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", f"^{title}$",
                    "windowactivate", "--sync", "windowsize", str(width), str(height)], check=True)


class PrintDialog(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = PrintServer().__enter__()
        cls.addClassCleanup(cls.server.__exit__)
        for sheet in ("A4", "A5", "Letter"):
            cls.server.add_queue(sheet, sheet)
        cls.server.add_queue("margins", "A4", margin=36)
        cls.server.add_queue("across", "A4", options=["orientation-requested-default=4"])
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        environment = {"HOME": folder.name, "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8"}
        cls.saved = subprocess.run([PELMORA, "--save", folder.name, SPECIMEN], env=environment, check=True,
                                   capture_output=True, text=True).stdout.splitlines()[0]

    def setUp(self):
        self.server.set_default("A4")
        self.counts = {queue: len(self.server.jobs(queue)) for queue in QUEUES}

    def next_job(self, queue):
        return self.server.wait_for_jobs(queue, self.counts[queue] + 1)[-1]

    @staticmethod
    def existing_file(home):
        os.makedirs(os.path.join(home, FOLDER))
        path = os.path.join(home, FOLDER, FILE)
        with open(path, "wb"):
            pass
        return path

    def assert_placed(self, path, placed):
        assert_words_placed(self, path, self.saved, placed)

    def test_a_window_that_shows_the_page_small_prints_it_at_full_size(self):
        with Desk(self.server.environment()) as desk:
            desk.open_viewer()
            resize(VIEWER, 300, 320)
            key_in(VIEWER, "ctrl+p")
            desk.press_in_dialog("Imprimer")
            job = self.next_job("A4")
            desk.wait_until_gone("dialog", DIALOG)
        self.assertEqual((job.title, job.copies), ("Attestation de droits", "1"))
        self.assertEqual(sheet_of(job.path)[0], 1)
        self.assert_placed(job.path, Placed(595, 842))

    def test_each_printer_has_its_own_paper(self):
        with Desk(self.server.environment()) as desk:
            desk.open_viewer()
            key_in(VIEWER, "ctrl+p")
            desk.choose_below("A4")
            desk.in_dialog("combo box", "A5")
            desk.press_in_dialog("Imprimer")
            job = self.next_job("A5")
        self.assert_placed(job.path, Placed(420, 595))

    def test_every_printer_gets_one_centred_sheet(self):
        for queue, place in QUEUES.items():
            with self.subTest(queue=queue), Desk(self.server.environment()) as desk:
                self.server.set_default(queue)
                desk.open_viewer()
                key_in(VIEWER, "ctrl+p")
                desk.in_dialog("combo box", queue)
                desk.press_in_dialog("Imprimer")
                job = self.next_job(queue)
                desk.wait_until_gone("dialog", DIALOG)
                self.assertEqual(sheet_of(job.path)[0], 1)
                self.assertEqual(job.title, "Attestation de droits")
                self.assert_placed(job.path, place)

    def test_copies_are_asked_of_the_printer(self):
        with Desk(self.server.environment()) as desk:
            desk.open_viewer()
            key_in(VIEWER, "ctrl+p")
            Atspi.Value.set_current_value(desk.in_dialog("spin button", "Copies\u00a0:"), 3)
            desk.press_in_dialog("Imprimer")
            job = self.next_job("A4")
        self.assertEqual(job.copies, "3")

    def test_the_main_window_prints_the_same_page(self):
        with Desk(self.server.environment()) as desk:
            desk.find("label", ".*SPECIMEN.*")
            desk.press("push button", "Imprimer")
            desk.press_in_dialog("Imprimer")
            job = self.next_job("A4")
        self.assert_placed(job.path, Placed(595, 842))

    def test_a_cancelled_dialog_prints_nothing_and_opens_again(self):
        with Desk(self.server.environment()) as desk:
            desk.open_viewer()
            for _ in range(2):
                key_in(VIEWER, "ctrl+p")
                desk.find("dialog", DIALOG)
                key_in(DIALOG, "Escape")
                desk.wait_until_gone("dialog", DIALOG)
            key_in(VIEWER, "ctrl+p")
            desk.press_in_dialog("Imprimer")
            self.next_job("A4")
        self.assertEqual(len(self.server.jobs("A4")), self.counts["A4"] + 1)

    def test_without_any_printer_a_pdf_file_is_offered(self):
        with tempfile.TemporaryDirectory() as home:
            with Desk({"CUPS_SERVER": os.path.join(home, "socket")}, home) as desk:
                desk.open_viewer()
                key_in(VIEWER, "ctrl+p")
                desk.in_dialog("combo box", r"Imprimer dans un fichier \(PDF\)")
                desk.press_in_dialog("Imprimer")
                path = os.path.join(home, FOLDER, FILE)
                wait(lambda: os.path.exists(path))
                desk.find("label", rf"Fichier ouvert le .*\nEnregistrée\u00a0: {FILE}")
            self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o600)
            self.assertEqual(sheet_of(path), (1, 595, 842))
            self.assert_placed(path, Placed(595, 842))

    def test_a_file_that_exists_is_replaced_only_when_the_user_says_so(self):
        with tempfile.TemporaryDirectory() as home, Desk({"CUPS_SERVER": os.path.join(home, "socket")}, home) as desk:
            path = self.existing_file(home)
            desk.open_viewer()
            key_in(VIEWER, "ctrl+p")
            desk.press_in_dialog("Imprimer")
            desk.find("label", rf"« .*{FILE} » existe déjà\.\nVoulez-vous le remplacer.\?")
            key_in(DIALOG, "Escape")
            desk.wait_until_gone("push button", "Remplacer")
            desk.press_in_dialog("Imprimer")
            desk.find("push button", "Remplacer")
            self.assertEqual(os.path.getsize(path), 0)
            desk.press("push button", "Remplacer")
            wait(lambda: sheet_of(path) == (1, 595, 842) if os.path.getsize(path) else None)

    def test_the_end_of_the_application_is_no_answer(self):
        with tempfile.TemporaryDirectory() as home, Desk({"CUPS_SERVER": os.path.join(home, "socket")}, home) as desk:
            path = self.existing_file(home)
            desk.open_viewer()
            key_in(VIEWER, "ctrl+p")
            desk.press_in_dialog("Imprimer")
            desk.find("push button", "Remplacer")
            self.assertEqual(desk.terminate(), 0)
            self.assertEqual(os.path.getsize(path), 0)
            self.assertEqual(os.listdir(os.path.dirname(path)), [FILE])

    def test_the_application_ends_while_the_dialog_is_open(self):
        with Desk(self.server.environment()) as desk:
            desk.open_viewer()
            key_in(VIEWER, "ctrl+p")
            desk.find("dialog", DIALOG)
            self.assertEqual(desk.terminate(), 0)
        self.assertEqual(len(self.server.jobs("A4")), self.counts["A4"])

    def test_the_window_does_without_the_print_library_until_its_options_open(self):
        with Desk(self.server.environment()) as desk:
            desk.open_viewer()

            def has_library():
                with open(f"/proc/{desk.process.pid}/maps", encoding="utf-8") as file:
                    return "libcups" in file.read()
            self.assertFalse(has_library())
            key_in(VIEWER, "ctrl+p")
            desk.find("dialog", DIALOG)
            self.assertFalse(has_library())
            desk.press_in_dialog("Options…")
            desk.in_dialog("push button", "Propriétés.*")
            self.assertTrue(has_library())

    def test_the_options_keep_the_printer_and_the_copies_and_print(self):
        with Desk(self.server.environment()) as desk:
            desk.open_viewer()
            key_in(VIEWER, "ctrl+p")
            desk.choose_below("A4")
            Atspi.Value.set_current_value(desk.in_dialog("spin button", "Copies\u00a0:"), 2)
            desk.press_in_dialog("Options…")
            desk.in_dialog("push button", "Propriétés.*")
            desk.in_dialog("combo box", "A5")
            desk.press_in_dialog("Imprimer")
            job = self.next_job("A5")
            desk.wait_until_gone("dialog", DIALOG)
        self.assertEqual(job.copies, "2")
        self.assert_placed(job.path, Placed(420, 595))

    def test_the_last_printer_is_chosen_the_next_time_unless_it_is_gone(self):
        self.server.add_queue("brief", "A4")
        with tempfile.TemporaryDirectory() as home:
            with Desk(self.server.environment(), home) as desk:
                desk.open_viewer()
                self.server.set_default("brief")
                key_in(VIEWER, "ctrl+p")
                desk.in_dialog("combo box", "brief")
                desk.press_in_dialog("Imprimer")
                self.server.wait_for_jobs("brief")
                desk.find("label", "Fichier ouvert le .*\nEnvoyée à «\u202fbrief\u202f» à\u00a0..:..")
                self.server.set_default("A4")
                desk.terminate()
            with Desk(self.server.environment(), home) as desk:
                desk.open_viewer()
                key_in(VIEWER, "ctrl+p")
                desk.in_dialog("combo box", "brief")
                key_in(DIALOG, "Escape")
                desk.wait_until_gone("dialog", DIALOG)
                self.server.run("lpadmin", "-x", "brief")
                key_in(VIEWER, "ctrl+p")
                desk.in_dialog("combo box", "A4")

    def test_printing_without_asking_sends_one_copy_to_the_last_printer(self):
        with tempfile.TemporaryDirectory() as home:
            write_settings(home, "MVPrintWithoutAsking=true")
            with Desk(self.server.environment(), home) as desk:
                # No printer is known yet.
                desk.open_viewer()
                key_in(VIEWER, "ctrl+p")
                Atspi.Value.set_current_value(desk.in_dialog("spin button", "Copies\u00a0:"), 2)
                desk.press_in_dialog("Imprimer")
                self.assertEqual(self.next_job("A4").copies, "2")
                desk.wait_until_gone("dialog", DIALOG)
                key_in(VIEWER, "ctrl+p")
                job = self.server.wait_for_jobs("A4", self.counts["A4"] + 2)[-1]
                self.assertIsNone(desk.find_now("dialog", DIALOG))
                desk.find("label", "Fichier ouvert le .*\nEnvoyée à «\u202fA4\u202f» à\u00a0..:..")
        self.assertEqual(job.copies, "1")
        self.assert_placed(job.path, Placed(595, 842))

    def test_printing_without_asking_asks_when_the_last_printer_is_gone(self):
        with tempfile.TemporaryDirectory() as home:
            write_settings(home, "MVPrintWithoutAsking=true", "MVLastPrinter=grenier")
            with Desk(self.server.environment(), home) as desk:
                desk.open_viewer()
                key_in(VIEWER, "ctrl+p")
                desk.in_dialog("combo box", "A4")

    def test_a_job_that_is_on_its_way_arrives_when_the_application_ends(self):
        with Desk(self.server.environment()) as desk:
            desk.open_viewer()
            key_in(VIEWER, "ctrl+p")
            desk.press_in_dialog("Imprimer")
            desk.wait_until_gone("dialog", DIALOG)
            self.assertEqual(desk.terminate(), 0)
        self.assert_placed(self.next_job("A4").path, Placed(595, 842))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
