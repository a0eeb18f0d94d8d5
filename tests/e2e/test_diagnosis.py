"""The card service's diagnosis. Usage: test_diagnosis.py STAGE, in a network of its own"""

import os
import re
import socket
import subprocess
import sys
import tempfile
import time
import unittest

from pcsc import MODEL, PcscService, Reader

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes"))
from virtualcard import UNPOWERABLE, VirtualCard  # noqa: E402

STAGE = sys.argv.pop(1)
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
PROGRAM = os.path.join(STAGE, "libexec", "pelmora", "com.morvel.lvit")


class DiagnosisTest(unittest.TestCase):
    readers = ()

    def diagnose(self, **environment):
        """The exit code, and the lines of each section: label and value."""
        with tempfile.TemporaryDirectory() as site:
            run = subprocess.run([PROGRAM, "--diagnose"], stdin=subprocess.DEVNULL, capture_output=True, timeout=60,
                                 env={**os.environ, "XDG_CONFIG_HOME": site, **environment})
        self.assertEqual(run.stderr.decode(), "")
        text = run.stdout.decode()
        sections, lines = {}, None
        for line in text.splitlines():
            if line.startswith("  "):
                lines.append((line[2:22].rstrip(), line[22:]))
            else:
                lines = sections.setdefault(line, [])
        # No data of the specimen card.
        self.assertIsNone(re.search("SPECIMEN|2850575", text))
        return run.returncode, {title: dict(found) for title, found in sections.items()}, text

    def until(self, reader, label, value, environment):
        """Repeats the diagnosis until PC/SC has noticed the change of the reader."""
        end = time.monotonic() + 15
        while time.monotonic() < end:
            code, sections, text = self.diagnose(**environment)
            if sections[reader].get(label) == value:
                return sections
        raise AssertionError(text)

    def test_readers_cards_and_their_acceptance(self):
        reader, other = Reader(), Reader("Autre lecteur")
        extended = {"PCSCLITE_FILTER_EXTEND_READER_NAMES": " [CCID Interface] (123)"}
        with PcscService(reader, other, **extended) as pcsc:
            environment = pcsc.environment()
            code, sections, text = self.diagnose(**environment)
            self.assertEqual(code, 0, text)
            self.assertEqual(sections["Service PC/SC"]["Socket"], pcsc.socket)
            self.assertRegex(sections["Service PC/SC"]["Droits"], r"^[rwx-]{9} \S+ \S+ \(accessible\)$")
            self.assertEqual(sections["Service PC/SC"]["État"], "en marche")
            accepted = sections[f"Lecteur « {MODEL} »"]
            self.assertEqual(accepted["Nom PC/SC"], MODEL + " [CCID Interface] (123) 00 00")
            self.assertEqual(accepted["Carte Vitale"], "lecteur accepté")
            self.assertEqual(accepted["Carte"], "absente")
            self.assertEqual(sections["Lecteur « Autre lecteur »"]["Carte Vitale"], "lecteur non retenu")

            card = VirtualCard.specimen(SPECIMEN)
            card.insert(reader.port)
            self.addCleanup(card.remove)
            sections = self.until(f"Lecteur « {MODEL} »", "Carte", "présente", environment)
            self.assertRegex(sections[f"Lecteur « {MODEL} »"]["ATR"], r"^3B( [0-9A-F]{2})+$")
            card.remove()
            self.until(f"Lecteur « {MODEL} »", "Carte", "absente", environment)
            mute = VirtualCard.specimen(SPECIMEN, atr=UNPOWERABLE)
            mute.insert(reader.port)
            self.addCleanup(mute.remove)
            self.until(f"Lecteur « {MODEL} »", "Carte", "muette : à l’envers, encrassée ou hors d’usage", environment)

    def test_without_the_accepted_reader_it_is_not_ready(self):
        with PcscService(Reader("Autre lecteur")) as pcsc:
            code, sections, text = self.diagnose(**pcsc.environment())
        self.assertEqual(code, 1)
        self.assertIn(f"Pelmora ne trouve pas de lecteur « {MODEL} »", text)

    def test_without_a_pcsc_service_it_says_what_to_look_at(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "pcscd.comm")
            code, sections, _ = self.diagnose(PCSCLITE_CSOCK_NAME=path)
        self.assertEqual(code, 1)
        self.assertEqual(sections["Service PC/SC"]["Socket"], f"{path} (absent)")
        self.assertIn("pcscd", sections["Service PC/SC"]["État"])
        self.assertIn("version", sections["Bibliothèque de lecture embarquée"]["Cartes connues"])

    def test_a_pcsc_service_that_hangs_is_said_to_hang(self):
        with tempfile.TemporaryDirectory() as folder, socket.socket(socket.AF_UNIX) as mute:
            path = os.path.join(folder, "pcscd.comm")
            mute.bind(path)
            mute.listen()
            code, sections, _ = self.diagnose(PCSCLITE_CSOCK_NAME=path)
        self.assertEqual(code, 1)
        self.assertEqual(sections["Service PC/SC"]["État"], "pas de réponse : un appel reste bloqué")


if __name__ == "__main__":
    unittest.main()
