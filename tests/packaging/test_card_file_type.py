"""The type of card files, as desktops find it. Usage: test_card_file_type.py STAGE"""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

STAGE = sys.argv.pop(1)
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
TYPE = "application/vnd.morvel.carte-vitale+xml"


class CardFileType(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.home = home.name
        packages = os.path.join(self.home, "data", "mime", "packages")
        os.makedirs(packages)
        shutil.copy(os.path.join(STAGE, "share", "mime", "packages", "com.morvel.Pelmora.xml"), packages)
        self.environment = {**os.environ, "LC_ALL": "C.UTF-8", "HOME": self.home, "XDG_DATA_DIRS": "/usr/share",
                            "XDG_DATA_HOME": os.path.join(self.home, "data")}
        done = subprocess.run(["update-mime-database", os.path.dirname(packages)], capture_output=True, text=True,
                              check=True, env=self.environment)
        self.assertEqual(done.stdout + done.stderr, "")

    def type_of(self, name, content):
        path = os.path.join(self.home, name)
        with open(path, "wb") as file:
            file.write(content)
        done = subprocess.run(["gio", "info", "-a", "standard::content-type", path], capture_output=True, text=True,
                              check=True, env=self.environment)
        return done.stdout.split("standard::content-type: ")[1].split("\n")[0]

    def test_a_card_file_is_known_by_its_name(self):
        self.assertEqual(self.type_of("carte.vitale.xml", b"<?xml version='1.0'?>\n<a/>"), TYPE)

    def test_a_card_file_without_a_telling_name_is_known_by_its_root_element(self):
        with open(SPECIMEN, "rb") as specimen:
            content = specimen.read()
        self.assertEqual(self.type_of("carte", content), TYPE)
        self.assertEqual(self.type_of("sans-declaration", content[content.index(b"<T_Asn"):]), TYPE)

    def test_other_xml_files_stay_what_they_are(self):
        with open(SPECIMEN, "rb") as specimen:
            self.assertEqual(self.type_of("carte.xml", specimen.read()), "application/xml")
        self.assertEqual(self.type_of("autre.xml", b"<?xml version='1.0'?>\n<a/>"), "application/xml")
        self.assertEqual(self.type_of("autre", b"<?xml version='1.0'?>\n<a/>"), "application/xml")


if __name__ == "__main__":
    unittest.main()
