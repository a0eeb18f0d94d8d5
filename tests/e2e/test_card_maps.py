"""Card maps of a site's own, in the card service's reads through a real PC/SC service. Usage: test_card_maps.py STAGE, in a
network of its own"""

import json
import os
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

from pcsc import PcscService, Reader
from service import CardService

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes"))
import cardlayout  # noqa: E402
from virtualcard import VirtualCard  # noqa: E402

STAGE = sys.argv.pop(1)
SHARE = os.path.join(STAGE, "share", "pelmora")
UNUSABLE, READ_ERROR = 0, 17

with open(os.path.join(SHARE, "specimen.xml"), encoding="utf-8") as specimen:
    SPECIMEN_XML = specimen.read()

# The elements of each person on a second-generation card, in the document's order.
PERSONAL = ("nomUsuel", "prenomUsuel", "date", "dateEnCarte", "rangDeNaissance", "nir", "qualBenef", "codeRegime", "caisse",
            "centreCarte", "codeGestion")


def persons(xml):
    """The texts of those elements, person by person."""
    return [[person.findtext(f".//{name}") for name in PERSONAL]
            for person in ElementTree.fromstring(xml).iter("T_AsnBeneficiaire")]


def completed_map():
    """The shipped map of the second generation, completed as the documentation says, with invented positions."""
    with open(os.path.join(SHARE, "maps", "vitale2.json"), encoding="utf-8") as file:
        card_map = json.load(file)
    card_map["name"] = "Carte d’essai complétée"
    card_map["files"] += [{"name": "personnes", "pointer": "BENEF"}, {"name": "couverture", "pointer": "COUVERT"}]
    people = card_map["beneficiaries"][0]
    people["file"] = "personnes"
    people["fields"] += [{"path": "ident/rangDeNaissance", "tag": "DF01", "form": "digits"},
                         {"path": "amo/qualBenef", "tag": "DF02", "form": "digits"}]
    fields = [{"path": f"amo/{name}", "tag": tag, "form": "digits"}
              for name, tag in (("codeRegime", "DF01"), ("caisse", "DF02"), ("centreCarte", "DF03"), ("codeGestion", "DF04"))]
    card_map["beneficiaries"].append({"file": "couverture", "record": "BF70", "fields": fields})
    return card_map


class SiteMaps(unittest.TestCase):
    def setUp(self):
        self.reader = Reader()
        self.pcsc = self.enterContext(PcscService(self.reader))
        self.folder = self.enterContext(tempfile.TemporaryDirectory())

    def write(self, name, text):
        place = os.path.join(self.folder, "MORVEL", "cartes")
        os.makedirs(place, exist_ok=True)
        with open(os.path.join(place, name), "w", encoding="utf-8") as file:
            file.write(text)

    def started(self):
        service = self.enterContext(CardService(STAGE, **self.pcsc.environment(), XDG_CONFIG_HOME=self.folder))
        self.assertTrue(service.bind())
        return service

    def insert(self, files):
        card = self.enterContext(VirtualCard(files))
        card.insert(self.reader.port)
        return card

    def test_a_completed_map_reads_what_the_shipped_one_refuses(self):
        card = self.insert(cardlayout.completed_second_generation_files(SPECIMEN_XML))
        self.assertEqual(self.started().read(), UNUSABLE)
        self.write("vitale2.json", json.dumps(completed_map()))
        service = self.started()
        count = len(card.commands)
        self.assertEqual(persons(service.read()), persons(SPECIMEN_XML))
        self.assertEqual(service.log(), "")
        # The first map fits the card: no other application was selected before.
        self.assertEqual(card.commands[count][5:], cardlayout.VITALE_APPLICATION)

    def test_other_cards_are_still_read_by_the_shipped_maps(self):
        self.write("vitale2.json", json.dumps(completed_map()))
        self.insert(cardlayout.specimen_files(SPECIMEN_XML))
        self.assertEqual(persons(self.started().read()), persons(SPECIMEN_XML))

    def test_a_file_that_the_card_does_not_name_is_told(self):
        self.write("vitale2.json", json.dumps(completed_map()))
        self.insert(cardlayout.second_generation_files())
        service = self.started()
        self.assertEqual(service.read(), READ_ERROR)
        self.assertIn("la carte ne désigne pas le fichier « personnes »", service.log())

    def test_a_malformed_map_is_told_and_passed_over(self):
        card_map = completed_map()
        card_map["beneficiaries"][1]["fields"][2]["form"] = "chiffres"
        self.write("vitale2.json", json.dumps(card_map))
        self.insert(cardlayout.specimen_files(SPECIMEN_XML))
        service = self.started()
        self.assertIn("vitale2.json : beneficiaries[1].fields[2].form : forme inconnue « chiffres »", service.log())
        self.assertEqual(persons(service.read()), persons(SPECIMEN_XML))


class CheckOfMaps(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def check(self, name, *card):
        """The exit code and the text of the service's check of a shipped map, or of a map's path."""
        program = os.path.join(STAGE, "libexec", "pelmora", "com.morvel.lvit")
        run = subprocess.run([program, "--check-map", os.path.join(SHARE, "maps", name), *card], capture_output=True,
                             env={"LC_ALL": "C.UTF-8"}, text=True, timeout=30)
        return run.returncode, run.stdout + run.stderr

    def test_a_recorded_card_is_read_with_the_map(self):
        subprocess.run([sys.executable, "-B", cardlayout.__file__, "specimen", self.folder], check=True,
                       input=SPECIMEN_XML, text=True)
        code, report = self.check("specimen.json", "--card", self.folder)
        self.assertEqual(code, 0, report)
        self.assertIn("  Bénéficiaires lus   3\n\nConclusion : aucun défaut.\n", report)
        self.assertNotIn("SPECIMEN", report)
        code, report = self.check("vitale2.json", "--card", self.folder)
        self.assertEqual(code, 1)
        self.assertIn("\n  carte : elle n’a pas l’application ", report)

    def test_a_faulty_map_and_one_that_is_not_there_have_their_exit_codes(self):
        faulty = os.path.join(self.folder, "carte.json")
        with open(faulty, "w", encoding="utf-8") as file:
            file.write('{"format": 2}')
        code, report = self.check(faulty)
        self.assertEqual(code, 1)
        self.assertIn("\nDéfauts\n  format : 1 est attendu\n", report)
        self.assertEqual(self.check(os.path.join(self.folder, "absent"))[0], 2)
        self.assertEqual(self.check("specimen.json", "--card", faulty),
                         (2, f"com.morvel.lvit: {faulty} n’est pas un dossier\n"))


if __name__ == "__main__":
    unittest.main()
