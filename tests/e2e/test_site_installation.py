"""The installation of a site, with a fake package manager that records its calls. Usage: test_site_installation.py
SOURCES, in a mount namespace of its own"""

import os
import stat
import subprocess
import sys
import tempfile
import unittest

SOURCES = sys.argv.pop(1)
SCRIPT = os.path.join(SOURCES, "tools", "install-site.sh")
EXAMPLE = os.path.join(SOURCES, "examples", "site", "Pelmora.conf")
PLACE = "/etc/xdg/MORVEL"


class SiteInstallation(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        os.makedirs("/etc/xdg", exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "tmpfs", "/etc/xdg"], check=True)
        self.addCleanup(subprocess.run, ["umount", "/etc/xdg"], check=True)
        self.record = self.path("record")
        with open(self.path("apt-get"), "w", encoding="utf-8") as script:
            script.write(f"#!/bin/sh\necho \"$DEBIAN_FRONTEND $*\" >>'{self.record}'\n[ ! -e '{self.folder}/fails' ]\n")
        os.chmod(self.path("apt-get"), 0o755)

    def path(self, name):
        return os.path.join(self.folder, name)

    def install(self, *arguments):
        done = subprocess.run([SCRIPT, *arguments], capture_output=True, text=True, check=False, cwd=self.folder,
                              stdin=subprocess.DEVNULL,
                              env={**os.environ, "PATH": self.folder + ":" + os.environ["PATH"], "LC_ALL": "C.UTF-8"})
        return done.returncode, done.stderr

    def commands(self):
        with open(self.record, encoding="utf-8") as file:
            return file.read().splitlines()

    def test_the_package_is_installed_and_the_settings_are_put_in_place(self):
        with open(self.path("pelmora_1.deb"), "w", encoding="utf-8"):
            pass
        self.assertEqual(self.install(EXAMPLE, "pelmora_1.deb"), (0, ""))
        self.assertEqual(self.install(EXAMPLE), (0, ""))
        commands = self.commands()
        self.assertTrue(all(command.startswith("noninteractive ") for command in commands))
        self.assertTrue(commands[1].endswith(" " + self.path("pelmora_1.deb")))
        self.assertTrue(commands[3].endswith(" pelmora"))
        self.assertEqual(os.listdir(PLACE), ["Pelmora.conf"])
        with open(EXAMPLE, "rb") as example, open(os.path.join(PLACE, "Pelmora.conf"), "rb") as placed:
            self.assertEqual(placed.read(), example.read())
        facts = os.stat(os.path.join(PLACE, "Pelmora.conf"))
        self.assertEqual((stat.S_IMODE(facts.st_mode), facts.st_uid), (0o644, 0))

    def test_a_failed_installation_leaves_the_settings_as_they_were(self):
        with open(self.path("fails"), "w", encoding="utf-8"):
            self.assertNotEqual(self.install(EXAMPLE)[0], 0)
        self.assertFalse(os.path.exists(PLACE))

    def test_what_cannot_be_used_is_told_before_anything_is_installed(self):
        with open(self.path("latin1.conf"), "wb") as file:
            file.write("[Verrouillé]\n".encode("latin-1"))
        self.assertEqual(self.install(self.path("latin1.conf")),
                         (1, self.path("latin1.conf") + " n’est pas en UTF-8 : rien n’est installé.\n"))
        for arguments in ((), (self.path("absent"),), (EXAMPLE, "a.deb", "b.deb")):
            self.assertEqual(self.install(*arguments)[0], 2)
        self.assertNotEqual(self.install(EXAMPLE, "absent.deb")[0], 0)
        self.assertFalse(os.path.exists(self.record))


if __name__ == "__main__":
    unittest.main()
