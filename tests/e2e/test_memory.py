"""Nothing of a card stays in the card service's memory. Usage: test_memory.py STAGE UNCLEARED-SERVICE ALLOCATOR, in a
network of its own"""

import os
import sys
import tempfile
import unittest

from memory import traces
from pcsc import PcscService, Reader
from service import CardService

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes"))
from virtualcard import VirtualCard  # noqa: E402

STAGE = sys.argv.pop(1)
UNCLEARED = sys.argv.pop(1)
ALLOCATOR = sys.argv.pop(1)

# Words that occur in no program.
TEXTS = ("ZYGOTSPECIMEN", "QUIRINALE", "2870675998877", "12, IMPASSE DES XYLOPHONES")
CARD = f"""<?xml version="1.0" encoding="UTF-8"?>
<T_AsnDonneesVitale><tech><numSerie>1</numSerie></tech><listeBenef><T_AsnBeneficiaire><ident>
<nomUsuel>{TEXTS[0]}</nomUsuel><prenomUsuel>{TEXTS[1]}</prenomUsuel><nir>{TEXTS[2]}</nir>
<adresse><ligne1>{TEXTS[3]}</ligne1></adresse></ident>
<amo><qualBenef>0</qualBenef><codeRegime>01</codeRegime><caisse>751</caisse></amo>
</T_AsnBeneficiaire>{{}}</listeBenef></T_AsnDonneesVitale>"""


SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
SPECIMEN_TEXTS = ("SPECIMEN", "MODÈLE", "Hélène", "285057511612381")


class SimulatedCardTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.card = os.path.join(folder.name, "carte.xml")

    def read_and_look(self, service, size=0):
        """The traces of a card of at least that size, after a read and one more command."""
        with open(self.card, "w", encoding="utf-8") as file:
            file.write(CARD.format(" " * size))
        self.assertTrue(service.bind(mode="0"))
        self.assertIn(TEXTS[0], service.read())
        service.readers()
        return traces(service.process.pid, TEXTS)

    def service(self, program=None, **environment):
        service = CardService(STAGE, "--simulate", self.card, **environment)
        service.program = program or service.program
        return service

    def test_nothing_of_a_card_is_left_once_it_is_told(self):
        for size in (0, 10_000, 1_000_000):
            with self.subTest(size=size), self.service() as service:
                self.assertEqual(self.read_and_look(service, size), [])
                # Also after several reads.
                self.assertEqual(self.read_and_look(service, size // 3), [])

    def test_nor_where_the_machine_has_another_allocator(self):
        with self.service(LD_PRELOAD=ALLOCATOR) as service:
            self.assertEqual(self.read_and_look(service), [])

    def test_without_the_clearing_the_card_would_be_found(self):
        with self.service(UNCLEARED) as service:
            found = self.read_and_look(service)
        for encoding in ("utf-8", "utf-16-le"):
            self.assertTrue([trace for trace in found if f"as {encoding} in" in trace], found)


class CardInAReaderTest(unittest.TestCase):
    """A complete read: PC/SC, files, map."""

    reader = Reader()

    def setUp(self):
        # The uncleared service is not in the installed tree and does not find the shipped maps.
        site = tempfile.TemporaryDirectory()
        self.addCleanup(site.cleanup)
        os.mkdir(os.path.join(site.name, "MORVEL"))
        os.symlink(os.path.join(STAGE, "share", "pelmora", "maps"), os.path.join(site.name, "MORVEL", "cartes"))
        self.site = site.name

    def read_and_look(self, program=None):
        with PcscService(self.reader) as pcsc, VirtualCard.specimen(SPECIMEN) as card:
            card.insert(self.reader.port)
            service = CardService(STAGE, XDG_CONFIG_HOME=self.site, **pcsc.environment())
            service.program = program or service.program
            with service:
                self.assertTrue(service.bind())
                self.assertIn(SPECIMEN_TEXTS[0], service.read())
                service.readers()
                return traces(service.process.pid, SPECIMEN_TEXTS)

    def test_nothing_of_a_card_is_left_once_it_is_told(self):
        self.assertEqual(self.read_and_look(), [])

    def test_without_the_clearing_the_card_would_be_found(self):
        found = self.read_and_look(UNCLEARED)
        for text in SPECIMEN_TEXTS:
            self.assertTrue([trace for trace in found if trace.startswith(text)], found)


if __name__ == "__main__":
    unittest.main()
