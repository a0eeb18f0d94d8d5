"""The system log's lines. Usage: test_system_log.py STAGE, in a mount namespace of its own"""

import os
import re
import subprocess
import sys
import tempfile
import unittest

from systemlog import SystemLog

STAGE = sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")


class SystemLogTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.home = tempfile.TemporaryDirectory()
        cls.system_log = SystemLog()
        cls.log = cls.system_log.socket

    @classmethod
    def tearDownClass(cls):
        cls.system_log.close()
        cls.home.cleanup()

    def run_pelmora(self, *arguments):
        """The program's number, its exit code and its standard error. It finds no PC/SC service."""
        environment = {"HOME": self.home.name, "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8",
                       "PCSCLITE_CSOCK_NAME": os.path.join(self.home.name, "absent")}
        process = subprocess.Popen([PELMORA, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   env=environment)
        _, errors = process.communicate(timeout=30)
        return process.pid, process.returncode, errors.decode()

    def test_a_failure_is_one_line_with_the_program_and_its_number(self):
        pid, code, errors = self.run_pelmora("--save", "/proc/é\nx", SPECIMEN)
        self.assertEqual(code, 1)
        line = self.log.recv(65536).decode()
        self.assertRegex(line, rf"(?s)^<11>.{{15}} pelmora\[{pid}\]: Error on folder create '/proc/é\nx' : "
                               "No such file or directory\x00?$")
        # Standard error is not a terminal here: it has the command's messages, but not the log.
        self.assertEqual(len(re.findall("Error on folder", errors)), 0)

    def test_the_card_service_tells_what_is_missing_once(self):
        self.system_log.lines()
        _, code, errors = self.run_pelmora("--save", os.path.join(self.home.name, "attestations"))
        self.assertEqual(code, 1)
        told = [line for line in self.system_log.lines() if "pcscd" in line]
        self.assertEqual(len(told), 1, told)
        self.assertRegex(told[0], r"^<13>.{15} pelmora\[\d+\]: com\.morvel\.lvit: ")
        # The log's line is not repeated to the user, who reads the failure in the application's own words.
        self.assertEqual(errors.count("pcscd"), 1)
        self.assertNotIn("com.morvel.lvit", errors)

    def test_a_patient_is_never_named(self):
        folder = os.path.join(self.home.name, "attestations")
        self.assertEqual(self.run_pelmora("--simulate", "--save", folder)[1], 0)
        self.assertEqual(self.run_pelmora("--save", folder, SPECIMEN)[1], 0)
        lines = self.system_log.lines()
        self.assertFalse([line for line in lines if "SPECIMEN" in line or "2850575" in line])


if __name__ == "__main__":
    unittest.main()
