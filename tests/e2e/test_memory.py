"""Nothing of a card stays in the card service's memory. Usage: test_memory.py STAGE UNCLEARED-SERVICE"""

import os
import sys
import tempfile
import unittest

from memory import traces
from service import CardService

STAGE = sys.argv.pop(1)
UNCLEARED = sys.argv.pop(1)

# Words that no program has a reason to know.
TEXTS = ("ZYGOTSPECIMEN", "QUIRINALE", "2870675998877", "12, IMPASSE DES XYLOPHONES")
CARD = f"""<?xml version="1.0" encoding="UTF-8"?>
<T_AsnDonneesVitale><tech><numSerie>1</numSerie></tech><listeBenef><T_AsnBeneficiaire><ident>
<nomUsuel>{TEXTS[0]}</nomUsuel><prenomUsuel>{TEXTS[1]}</prenomUsuel><nir>{TEXTS[2]}</nir>
<adresse><ligne1>{TEXTS[3]}</ligne1></adresse></ident>
<amo><qualBenef>0</qualBenef><codeRegime>01</codeRegime><caisse>751</caisse></amo>
</T_AsnBeneficiaire>{{}}</listeBenef></T_AsnDonneesVitale>"""


class MemoryTest(unittest.TestCase):
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

    def service(self, program=None):
        service = CardService(STAGE, "--simulate", self.card)
        service.program = program or service.program
        return service

    def test_nothing_of_a_card_is_left_once_it_is_told(self):
        for size in (0, 10_000, 1_000_000):
            with self.subTest(size=size), self.service() as service:
                self.assertEqual(self.read_and_look(service, size), [])
                # Nor after more of them.
                self.assertEqual(self.read_and_look(service, size // 3), [])

    def test_without_the_clearing_the_card_would_be_found(self):
        with self.service(UNCLEARED) as service:
            found = self.read_and_look(service)
        for encoding in ("utf-8", "utf-16-le"):
            self.assertTrue([trace for trace in found if f"as {encoding} in" in trace], found)


if __name__ == "__main__":
    unittest.main()
