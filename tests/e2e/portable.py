"""Shared by the tests of portable copies: a home with copies that offer to move to the Applications folder. The command
line of such a test: STAGE MOVABLE_PROGRAM, in a mount namespace of its own."""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

from desktop import Application, Running, processes_of
from systemlog import SystemLog

MOVABLE_PROGRAM = sys.argv.pop(2)
STAGE = sys.argv.pop(1)

HOME_TITLE = "Déplacer vers le dossier Applications de votre dossier personnel\u202f?"
BODY = "Je peux me déplacer vers le dossier Applications si vous le souhaitez."
DOWNLOADS_NOTE = "Votre dossier Téléchargements restera ainsi bien rangé."
PASSWORD_NOTE = "Un mot de passe d’administrateur vous sera alors demandé."
MOVE = "Déplacer vers le dossier Applications"
STAY = "Ne pas déplacer"
# The system log's facility for user programs, and priorities.
INFO, WARNING, ERROR = 8 + 6, 8 + 4, 8 + 3
BOX = "Ne plus afficher ce message"


def program_of(bundle):
    """The path of the copy's program with the window, which its bin/pelmora starts."""
    return os.path.join(bundle, "libexec", "pelmora", "pelmora-window")


def make_bundle(path):
    """A portable copy at the path, with the small program instead of the window's, and the texts."""
    for folder in ("bin", os.path.join("libexec", "pelmora")):
        os.makedirs(os.path.join(path, folder))
    shutil.copy(os.path.join(STAGE, "bin", "pelmora"), os.path.join(path, "bin", "pelmora"))
    shutil.copy(MOVABLE_PROGRAM, program_of(path))
    shutil.copytree(os.path.join(STAGE, "share", "pelmora", "fr.lproj"),
                    os.path.join(path, "share", "pelmora", "fr.lproj"))
    return path


def unpack(path):
    """A portable copy of the whole tree, unpacked from an archive."""
    folder, name = os.path.split(path)
    os.makedirs(folder, exist_ok=True)
    archive = os.path.join(folder, "portable.tar.zst")
    subprocess.run(["tar", "--create", "--use-compress-program", "zstd -1", "--file", archive, "--directory", STAGE,
                    "--transform", f"s,^[.],{name},S", "."], check=True)
    subprocess.run(["tar", "--extract", "--file", archive, "--directory", folder], check=True)
    os.remove(archive)
    return path


class PortableTest(unittest.TestCase):
    """A test with a home of its own, and what was written to the system log."""

    @classmethod
    def setUpClass(cls):
        cls.system_log = SystemLog()

    @classmethod
    def tearDownClass(cls):
        cls.system_log.close()

    def setUp(self):
        self.system_log.lines()
        self.home = tempfile.mkdtemp(prefix="Anne d'été ")
        self.addCleanup(self.remove_home)
        os.makedirs(os.path.join(self.home, "Applications", "Autre.app"))
        self.downloads = os.path.join(self.home, "Downloads")
        self.destination = os.path.join(self.home, "Applications", "Pelmora.app")
        self.trash = os.path.join(self.home, "data", "Trash", "files")
        self.settings = os.path.join(self.home, "config", "MORVEL", "Pelmora.conf")
        self.environment = {"XDG_DATA_HOME": os.path.join(self.home, "data"), "LANGUAGE": "en"}

    def remove_home(self):
        for folder in ("Applications", "Downloads"):
            for path in (program_of(root) for root, _, _ in os.walk(os.path.join(self.home, folder))):
                for pid in processes_of(path):
                    os.kill(pid, signal.SIGKILL)
        shutil.rmtree(self.home)

    def start(self, bundle, *arguments, **environment):
        return Application(os.path.join(bundle, "bin", "pelmora"), *arguments, home=self.home,
                           environment={**self.environment, **environment})

    def running(self, bundle):
        return Running(program_of(bundle))

    def logged(self):
        """The routine's lines of the system log, each with its priority."""
        lines = []
        for line in self.system_log.lines():
            found = re.match(r"(?s)<(\d+)>.{15} pelmora\[\d+\]: ((?:INFO|WARNING|ERROR) -- .*?|Trash .*?)\x00?$", line)
            if found:
                lines.append((int(found[1]), found[2]))
        return lines

    def stored(self):
        if not os.path.exists(self.settings):
            return ""
        with open(self.settings, encoding="utf-8") as file:
            return file.read()
