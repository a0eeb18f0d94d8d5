"""Printing without a window, to a print server of the test's own. Usage: test_print.py STAGE"""

import os
import subprocess
import sys
import tempfile
import time
import unittest

import libraries
from documents import TOLERANCE, Placed, assert_words_placed, colours_in, ink_box, sheet_of, words_of
from printserver import PrintServer

STAGE = sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")


class Print(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = PrintServer().__enter__()
        cls.addClassCleanup(cls.server.__exit__)
        cls.home = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.home.cleanup)
        cls.temporary = os.path.join(cls.home.name, "tmp")
        os.mkdir(cls.temporary)
        folder = os.path.join(cls.home.name, "saved")
        cls.saved = cls.run_pelmora("--save", folder, SPECIMEN)[1].splitlines()[0]

    @classmethod
    def run_pelmora(cls, *arguments, **environment):
        values = {"HOME": cls.home.name, "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "TMPDIR": cls.temporary,
                  "XDG_RUNTIME_DIR": cls.home.name, **cls.server.environment(), **environment}
        result = subprocess.run([PELMORA, *arguments], env=values, capture_output=True, text=True, timeout=60)
        return result.returncode, result.stdout, result.stderr

    def printed(self, queue, *arguments):
        """Prints with the queue as the default printer; the job that it received."""
        self.server.set_default(queue)
        before = len(self.server.jobs(queue))
        self.assertEqual(self.run_pelmora("--print", *(arguments or [SPECIMEN])), (0, "", ""))
        return self.server.wait_for_jobs(queue, before + 1)[-1]

    def assert_placed(self, path, placed):
        """Every word of the saved attestation, and the box around its ink, lie where they should."""
        assert_words_placed(self, path, self.saved, placed)
        for value, target in zip(ink_box(path), placed.box(ink_box(self.saved))):
            self.assertAlmostEqual(value, target, delta=TOLERANCE, msg="ink")

    def test_no_part_of_a_window_system_is_loaded(self):
        self.server.add_queue("Libraries", "A4")
        self.server.set_default("Libraries")
        code, _, log = self.run_pelmora("--print", SPECIMEN, LD_DEBUG="files")
        self.assertEqual(code, 0)
        names = libraries.loaded(log)
        # A library of the program, and one of the process that submits the job.
        self.assertTrue(any(name.startswith("libQt6Core.so") for name in names), names)
        self.assertTrue(any(name.startswith("libcups.so") for name in names), names)
        self.assertEqual(libraries.of_a_window_system(names), set())

    def test_each_paper_gets_one_centred_page(self):
        for number, (sheet, width, height) in enumerate([("A4", 595, 842), ("A5", 420, 595), ("Letter", 612, 792)]):
            with self.subTest(sheet=sheet):
                self.server.add_queue(sheet, sheet)
                job = self.printed(sheet)
                pages, *size = sheet_of(job.path)
                self.assertEqual(pages, 1)
                self.assertAlmostEqual(size[0], width, delta=TOLERANCE)
                self.assertAlmostEqual(size[1], height, delta=TOLERANCE)
                self.assert_placed(job.path, Placed(width, height))

    def test_the_printer_s_margins_neither_move_nor_shrink_the_page(self):
        self.server.add_queue("margins", "A4", margin=36)
        self.assert_placed(self.printed("margins").path, Placed(595, 842))

    def test_a_sheet_read_across_holds_the_whole_page(self):
        self.server.add_queue("across", "A4", options=["orientation-requested-default=4"])
        job = self.printed("across")
        self.assertEqual(sheet_of(job.path)[0], 1)
        self.assert_placed(job.path, Placed(595, 842, turned=True))

    def test_the_user_s_own_settings_of_a_queue_count(self):
        self.server.add_queue("mine", "A4")
        folder = os.path.join(self.home.name, ".cups")
        os.makedirs(folder, exist_ok=True)
        path = os.path.join(folder, "lpoptions")
        self.addCleanup(os.remove, path)
        with open(path, "w", encoding="utf-8") as file:
            file.write("Dest mine PageSize=A5 copies=2 fit-to-page=true number-up=4\n")
        job = self.printed("mine")
        self.assertEqual(job.copies, "2")
        self.assert_placed(job.path, Placed(420, 595))

    def test_a_queue_that_passes_everything_through_gets_what_is_saved(self):
        self.server.add_queue("raw")
        job = self.printed("raw")
        self.assertEqual(sheet_of(job.path), (1, 595, 842))
        self.assert_placed(job.path, Placed(595, 842))

    def test_texts_are_black_texts(self):
        self.server.add_queue("ink", "A4")
        job = self.printed("ink")
        box = next(box for word, box in words_of(job.path) if word == "SPECIMEN")
        colours = colours_in(job.path, box)
        self.assertIn(b"\0\0\0", colours)
        self.assertFalse([colour for colour in colours if len(set(colour)) > 1])

    def test_nobody_s_name_is_told_to_the_print_server(self):
        self.server.add_queue("name", "A4")
        job = self.printed("name")
        self.assertEqual(job.title, "Attestation de droits")
        for told in (job.title, job.options, self.server.log()):
            self.assertNotIn("SPECIMEN", told)
            self.assertNotIn("2850575", told)

    def test_nothing_is_left_in_temporary_files(self):
        self.server.add_queue("clean", "A4")
        self.printed("clean")
        self.assertEqual(os.listdir(self.temporary), [])

    def test_the_card_in_the_reader_is_printed(self):
        self.server.add_queue("reader", "A4")
        job = self.printed("reader", "--simulate")
        self.assertIn("SPECIMEN", [word for word, _ in words_of(job.path)])

    def test_a_bad_file_is_told_and_the_others_are_printed(self):
        self.server.add_queue("several")
        self.server.set_default("several")
        absent = os.path.join(self.home.name, "absent.xml")
        code, output, errors = self.run_pelmora("--print", SPECIMEN, absent, SPECIMEN)
        self.assertEqual((code, output), (1, ""))
        self.assertEqual(errors, f"pelmora : {absent} : Le fichier n’existe pas.\n")
        self.assertEqual(len(self.server.wait_for_jobs("several", 2)), 2)

    def test_without_a_default_printer_a_line_says_so(self):
        with PrintServer() as empty:
            empty.add_queue("other")
            self.assertEqual(self.run_pelmora("--print", SPECIMEN, **empty.environment()),
                             (1, "", "pelmora : aucune imprimante par défaut n’est définie.\n"))

    def test_without_a_print_server_a_line_says_so(self):
        self.assertEqual(self.run_pelmora("--print", SPECIMEN, CUPS_SERVER=os.path.join(self.home.name, "absent")),
                         (1, "", "pelmora : aucune imprimante par défaut n’est définie.\n"))

    def test_a_printer_that_takes_nothing_is_told(self):
        self.server.add_queue("closed", "A4")
        self.server.run("cupsreject", "closed")
        self.server.set_default("closed")
        self.assertEqual(
            self.run_pelmora("--print", SPECIMEN),
            (1, "", "pelmora : L’imprimante « closed » n’accepte plus de documents pour l’instant.\n"))

    def test_a_print_server_that_stalls_is_given_up(self):
        with PrintServer() as silent:
            silent.add_queue("queue")
            silent.set_default("queue")
            silent.stall()
            start = time.monotonic()
            self.assertEqual(self.run_pelmora("--print", SPECIMEN, **silent.environment()),
                             (1, "", "pelmora : Le serveur d’impression ne répond pas.\n"))
            self.assertLess(time.monotonic() - start, 15)

    def test_saving_and_printing_at_once_is_a_wrong_command(self):
        self.assertEqual(self.run_pelmora("--print", "--save", "x")[0], 2)


if __name__ == "__main__":
    unittest.main()
