"""A reading library that is installed on the system, where this test alone sees it, and the process that it works in.
Usage: test_reading_library.py STAGE SCRIPTED PROBING, in a mount namespace of its own. The two are reading libraries:
one that does as it is told, one that tries what it must not."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from memory import is_sanitized, traces
from service import CardService

STAGE = sys.argv.pop(1)
SCRIPTED = sys.argv.pop(1)
PROBING = sys.argv.pop(1)

SOURCES = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "../.."))
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
FOLDER = "/usr/lib/pelmora"
LIBRARY = os.path.join(FOLDER, "reading-library.so")


def lay_over_system():
    """Lets this process change /usr/lib for itself alone."""
    layer = tempfile.mkdtemp()
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=755", "none", layer], check=True)
    for name in ("upper", "work"):
        os.mkdir(os.path.join(layer, name), 0o755)
    subprocess.run(["mount", "-t", "overlay", "-o",
                    f"lowerdir=/usr/lib,upperdir={layer}/upper,workdir={layer}/work", "overlay", "/usr/lib"], check=True)
    shutil.rmtree(FOLDER, ignore_errors=True)
    return layer


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
        return CardService(STAGE, *arguments, HOME=self.home, PCSCLITE_CSOCK_NAME="/nonexistent")

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

    def test_an_attestation_is_made_through_it(self):
        self.install(self.example)
        shutil.copy(SPECIMEN, os.path.join(FOLDER, "card.xml"))

        def text_of_attestation(name, *arguments):
            folder = os.path.join(self.home, name)
            environment = {"HOME": self.home, "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8",
                           "XDG_CONFIG_HOME": self.home, "PCSCLITE_CSOCK_NAME": "/nonexistent"}
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

    # What it works in.

    def test_the_process_is_confined(self):
        self.install(PROBING)
        with open(os.path.join(self.home, "old"), "w", encoding="ascii") as file:
            file.write("old")
        for folder in ("Library/Logs/santesocial", "Library/Preferences/santesocial/sedica"):
            os.makedirs(os.path.join(self.home, folder))
        with self.service() as service:
            self.assertEqual(service.ask("init", Mode="1")["Status"], "success")
            informations = service.ask("informations")["Informations"]
            log = service.log()
        report = re.search("<version>(.*)</version>", informations).group(1)
        results = dict(entry.split("=") for entry in report.split())
        expected = dict.fromkeys(("unix", "read", "null", "log", "settings"), "OK")
        expected |= dict.fromkeys(("inet", "inet6", "netlink", "packet", "vsock"), "EACCES")
        expected |= dict.fromkeys(("create", "write", "truncate", "temporary", "shared", "folder"), "EACCES")
        expected |= {"uring": "ENOSYS", "privileges": "EPERM"}
        if "réseau" in log or "écriture" in log:
            self.skipTest("this system lacks: " + log)
        self.assertEqual(results, expected)
        self.assertFalse(os.path.exists("/tmp/pelmora-probe"))

    def test_where_the_protections_are_missing_it_says_so_and_works(self):
        for call, protection in (("prctl", "renoncer aux privilèges"), ("seccomp", "refuser le réseau"),
                                 ("landlock_create_ruleset", "refuser l’écriture de fichiers")):
            with self.subTest(protection), tempfile.TemporaryDirectory() as folder:
                service = self.service("--simulate", SPECIMEN)
                service.arguments = ("-f", "-o", os.path.join(folder, "calls"), "-e", f"inject={call}:error=ENOSYS",
                                     service.program, *service.arguments)
                service.program = "/usr/bin/strace"
                service.environment["ASAN_OPTIONS"] = "detect_leaks=0"  # which a traced process cannot do
                with service:
                    self.assertTrue(service.bind(mode="0"))
                    self.assertIn("SPECIMEN", service.read())
                    self.assertEqual(service.finish(), 0)
                    self.assertRegex(service.log(), f"^com.morvel.lvit: protection indisponible : {protection}")


if __name__ == "__main__":
    unittest.main()
