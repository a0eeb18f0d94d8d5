"""A reading library that is installed on the system, visible to this test only, and the process that it runs in.
Usage: test_reading_library.py STAGE SCRIPTED, in a mount namespace of its own. SCRIPTED is a reading library that is
controlled by files."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from installation import FOLDER, LIBRARY, lay_over_system
from memory import is_sanitized, traces
from service import CardService

STAGE = sys.argv.pop(1)
SCRIPTED = sys.argv.pop(1)

SOURCES = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "../.."))
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")

def compile_example(folder):
    """The example of the documentation, built as the documentation says."""
    with open(os.path.join(SOURCES, "docs", "reading-library.md"), encoding="utf-8") as page:
        example = re.search(r"^```c\n(.*?)^```", page.read(), re.M | re.S).group(1)
    source = os.path.join(folder, "adapter.c")
    with open(source, "w", encoding="utf-8") as file:
        file.write(example)
    library = os.path.join(folder, "reading-library.so")
    subprocess.run(["cc", "-std=c11", "-Wall", "-Wextra", "-Werror", "-fPIC", "-shared", "-o", library, source, "-I",
                    os.path.join(SOURCES, "include")], check=True)
    return library


@unittest.skipUnless(os.stat("/").st_uid == 0, "the system's folders are not root's in this namespace")
class ReadingLibraryTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.layer = lay_over_system()
        cls.addClassCleanup(os.rmdir, cls.layer)
        cls.addClassCleanup(subprocess.run, ["umount", "-l", "/usr/lib", cls.layer], check=True)
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.example = compile_example(folder.name)

    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.home = home.name
        os.mkdir(FOLDER, 0o755)
        self.addCleanup(shutil.rmtree, FOLDER)

    def install(self, library, **files):
        shutil.copy(library, LIBRARY)
        os.chmod(LIBRARY, 0o755)
        for name, content in files.items():
            self.put(name.replace("__", "."), content)

    def put(self, name, content):
        with open(os.path.join(FOLDER, name), "w", encoding="utf-8") as file:
            file.write(content)

    def service(self, *arguments):
        return CardService(STAGE, *arguments, HOME=self.home, PCSCLITE_CSOCK_NAME=os.path.join(self.home, "absent"))

    # The documentation's example.

    def test_the_documented_example_reads_a_card(self):
        self.install(self.example)
        with open(SPECIMEN, encoding="utf-8") as file:
            specimen = file.read()
        with self.service() as service:
            self.assertEqual(service.ask("init", Mode="0"), {"Status": "success", "Embedded": "false"})
            self.assertEqual(service.readers(), ["Feitian SCR301"])
            self.assertTrue(service.bind(mode="0"))
            self.assertIn("<version>1.0 (example)</version>", service.ask("informations")["Informations"])
            self.assertEqual(service.read(), 11)
            shutil.copy(SPECIMEN, os.path.join(FOLDER, "card.xml"))
            self.assertEqual(service.read(), specimen)
            self.assertEqual(service.finish(), 0)
            self.assertEqual(service.log(), "")

    def check(self, library):
        """The exit code and the text of the service's check of a library."""
        service = self.service()
        run = subprocess.run([service.program, "--check-library", library], env=service.environment,
                             capture_output=True, text=True, timeout=110)
        return run.returncode, run.stdout + run.stderr

    def test_the_documented_example_passes_its_check_with_a_card_and_without(self):
        with self.subTest("no card"):
            code, report = self.check(self.example)
            self.assertEqual((code, report[-29:]), (0, "\n\nConclusion : aucun défaut.\n"), report)
            self.assertIn("  Lecture             PELMORA_READING_CARD_ABSENT\n", report)
        with self.subTest("card"):
            shutil.copy(SPECIMEN, os.path.join(FOLDER, "card.xml"))
            code, report = self.check(self.example)
            self.assertEqual(code, 0, report)
            self.assertIn(f"  Lecture             document de {os.path.getsize(SPECIMEN)} octets\n", report)
            self.assertNotIn("SPECIMEN", report)

    def test_a_faulty_library_fails_its_check_and_no_library_cannot_be_checked(self):
        self.install(SCRIPTED, readers__text="Feitian SCR301")
        code, report = self.check(LIBRARY)
        self.assertEqual(code, 1)
        self.assertIn("\n  pelmora_reading_readers, appel 1 : la dernière ligne n’a pas de fin\n", report)
        self.assertEqual(self.check(os.path.join(self.home, "absent")),
                         (2, f"com.morvel.lvit: {self.home}/absent : fichier illisible\n"))

    def test_an_attestation_is_made_through_it(self):
        self.install(self.example)
        shutil.copy(SPECIMEN, os.path.join(FOLDER, "card.xml"))

        def text_of_attestation(name, *arguments):
            folder = os.path.join(self.home, name)
            environment = {"HOME": self.home, "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8",
                           "XDG_CONFIG_HOME": self.home, "PCSCLITE_CSOCK_NAME": os.path.join(self.home, "absent")}
            run = subprocess.run([PELMORA, *arguments, "--save", folder], env=environment, capture_output=True, text=True,
                                 timeout=60)
            self.assertEqual((run.returncode, run.stderr), (0, ""))
            return subprocess.run(["pdftotext", "-layout", run.stdout.rstrip("\n"), "-"], check=True,
                                  capture_output=True).stdout

        attestation = text_of_attestation("read")
        self.assertIn(b"SPECIMEN", attestation)
        self.assertEqual(attestation, text_of_attestation("simulated", "--simulate"))

    def test_nothing_of_a_card_stays_in_memory(self):
        self.install(self.example, card__xml="<T_AsnDonneesVitale><nom>ZYGOTSPECIMEN</nom></T_AsnDonneesVitale>")
        with self.service() as service:
            self.assertTrue(service.bind(mode="1"))
            if is_sanitized(service.process.pid):
                self.skipTest("sanitizers keep what is given back")
            self.assertIn("ZYGOTSPECIMEN", service.read())
            service.readers()
            self.assertEqual(traces(service.process.pid, ["ZYGOTSPECIMEN"]), [])

    # The modes.

    def test_the_mode_decides_between_the_two_libraries(self):
        refused = {"Status": "error"}
        embedded = {"Status": "success", "Embedded": "true"}
        installed = {"Status": "success", "Embedded": "false"}
        with self.service() as service:
            self.assertEqual([service.ask("init", Mode=mode) for mode in "012"], [embedded, refused, embedded])
        self.install(self.example)
        with self.service() as service:
            self.assertEqual([service.ask("init", Mode=mode) for mode in "012"], [installed, installed, embedded])
            self.assertEqual(service.readers(), [])

    def test_a_library_that_others_could_have_put_there_is_refused(self):
        faults = {
            "mode of the library": (lambda: os.chmod(LIBRARY, 0o775), f"{LIBRARY} peut être modifié par d’autres"),
            "owner of the library": (lambda: os.chown(LIBRARY, 65534, 0), f"{LIBRARY} n’appartient pas à root"),
            "mode of the folder": (lambda: os.chmod(FOLDER, 0o757), f"{FOLDER} peut être modifié par d’autres"),
            "owner of the folder": (lambda: os.chown(FOLDER, 65534, 0), f"{FOLDER} n’appartient pas à root"),
            "mode of a folder above": (lambda: os.chmod("/usr/lib", 0o777), "/usr/lib peut être modifié par d’autres"),
        }
        for name, (spoil, reason) in faults.items():
            with self.subTest(name), self.service() as service:
                os.chmod("/usr/lib", 0o755)
                os.chmod(FOLDER, 0o755)
                os.chown(FOLDER, 0, 0)
                if os.path.exists(LIBRARY):
                    os.remove(LIBRARY)
                self.install(self.example)
                os.chown(LIBRARY, 0, 0)
                spoil()
                self.assertEqual(service.ask("init", Mode="1"), {"Status": "error"})
                self.assertEqual(service.ask("init", Mode="0")["Embedded"], "true")
                self.assertIn(f"bibliothèque de lecture installée refusée : {reason}", service.log())
        os.chmod("/usr/lib", 0o755)

    # What goes wrong.

    def test_a_cut_library_leaves_the_embedded_one_to_read(self):
        self.install(self.example)
        os.truncate(LIBRARY, os.path.getsize(LIBRARY) // 2)
        refused = f"{LIBRARY} ne se charge pas : "
        with self.service() as service:
            self.assertEqual(service.ask("init", Mode="0"), {"Status": "success", "Embedded": "true"})
            self.assertEqual(service.ask("init", Mode="1"), {"Status": "error"})
            self.assertIn(refused, service.log())
            self.assertEqual(service.finish(), 0)
        service = self.service()
        run = subprocess.run([service.program, "--diagnose"], env=service.environment, capture_output=True, text=True,
                             timeout=60)
        self.assertEqual(run.returncode, 1)  # there is no reader
        self.assertIn(f"  État                refusée : {refused}", run.stdout)
        self.assertIn("  Emploi              sert en mode automatique\n", run.stdout)

    def test_without_a_library_no_process_is_made_to_try_one(self):
        def processes_made(folder):
            service = self.service()
            service.arguments = ("-f", "-qq", "-o", os.path.join(folder, "calls"), "-e", "trace=fork,vfork,clone,clone3",
                                 service.program)
            service.program = "/usr/bin/strace"
            service.environment["ASAN_OPTIONS"] = "detect_leaks=0"  # which a traced process cannot do
            with service:
                self.assertEqual(service.ask("init", Mode="0")["Status"], "success")
                self.assertEqual(service.finish(), 0)
            with open(os.path.join(folder, "calls"), encoding="ascii") as calls:
                return sum("CLONE_THREAD" not in call and "resumed" not in call for call in calls if "clone" in call)
        without = processes_made(self.home)
        self.install(self.example)
        self.assertEqual(processes_made(self.home), without + 1)

    def test_a_call_that_hangs_is_answered_and_ends_the_service(self):
        self.install(SCRIPTED, readers__hang="")
        with self.service() as service:
            self.assertEqual(service.ask("init", Mode="1")["Status"], "success")
            self.assertEqual(service.readers(), [])
            self.assertEqual(service.process.wait(timeout=5), 1)
            self.assertIn("le service est à remplacer", service.log())
        os.remove(os.path.join(FOLDER, "readers.hang"))
        self.put("readers.text", "Feitian SCR301 [CCID Interface] (1) 00 00\n")
        with self.service() as service:
            self.assertTrue(service.bind(mode="1"))

    def test_a_chatty_or_lying_library_does_not_reach_the_channel(self):
        self.install(SCRIPTED, readers__text="Feitian SCR301\n", read_card__text="SPECIMEN", version0__text="\x07")
        with self.service() as service:
            self.assertTrue(service.bind(mode="1"))
            self.assertEqual(service.read(), 17)
            self.assertIn("<version></version>", service.ask("informations")["Informations"])
            self.assertNotIn("SPECIMEN", service.log())


if __name__ == "__main__":
    unittest.main()
