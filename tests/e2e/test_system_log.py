"""What reaches the system log. Usage: test_system_log.py STAGE, in a mount namespace of its own"""

import os
import re
import socket
import subprocess
import sys
import tempfile
import unittest

STAGE = sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")


def mount(*arguments):
    subprocess.run(["mount", *arguments], check=True)


def system_log(folder):
    """A system log of the test's own: a /dev that this namespace alone sees, with a socket where programs log."""
    mount("-t", "tmpfs", "tmpfs", folder)
    for device in ("null", "zero", "full", "random", "urandom"):
        path = os.path.join(folder, device)
        open(path, "w", encoding="utf-8").close()
        mount("--bind", os.path.join("/dev", device), path)
    mount("--rbind", folder, "/dev")
    log = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
    log.bind("/dev/log")
    log.settimeout(10)
    return log


class SystemLog(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.home = tempfile.TemporaryDirectory()
        cls.device = os.path.join(cls.home.name, "dev")
        os.mkdir(cls.device)
        cls.log = system_log(cls.device)

    @classmethod
    def tearDownClass(cls):
        cls.log.close()
        for mounted in ("/dev", cls.device):
            subprocess.run(["umount", "--lazy", "--recursive", mounted], check=True)
        cls.home.cleanup()

    def run_pelmora(self, *arguments):
        """The program's number, its exit code and its standard error."""
        environment = {"HOME": self.home.name, "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8"}
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
        # Standard error is no terminal here: it holds what the command says, and not the log.
        self.assertEqual(len(re.findall("Error on folder", errors)), 0)

    def test_a_patient_is_never_named(self):
        folder = os.path.join(self.home.name, "attestations")
        self.assertEqual(self.run_pelmora("--simulate", "--save", folder)[1], 0)
        self.assertEqual(self.run_pelmora("--save", folder, SPECIMEN)[1], 0)
        self.log.setblocking(False)
        lines = []
        while True:
            try:
                lines.append(self.log.recv(65536).decode())
            except BlockingIOError:
                break
        self.assertFalse([line for line in lines if "SPECIMEN" in line or "2850575" in line])


if __name__ == "__main__":
    unittest.main()
