"""Software updates in the windows, from a publisher's server on loopback. Usage: test_update.py STAGE"""

import os
import plistlib
import re
import shutil
import stat
import sys
import tempfile
import unittest

from desktop import Application, Atspi, Opener, Running, key, processes_of, wait
from updates import Maker, WebServer

STAGE = sys.argv.pop(1)
PACKAGE = b"A package of a newer version. " * 50_000
WINDOW = "Mise à jour de Pelmora"
FAILED = "Aucune mise à jour n’a pu être obtenue\\."
AVAILABLE = "La version 2\\.0 de Pelmora est disponible\\."
NETWORK = ("libQt6Network", "libgssapi_krb5", "libkrb5", "libproxy", "libsodium")


def tree_with(folder, information):
    """A copy of the installed tree with more values in its information dictionary."""
    tree = os.path.join(tempfile.mkdtemp(dir=folder), "tree")
    shutil.copytree(STAGE, tree)
    path = os.path.join(tree, "share", "pelmora", "Info.plist")
    with open(path, "rb") as file:
        values = plistlib.load(file)
    with open(path, "wb") as file:
        plistlib.dump({**values, **information}, file)
    return tree


def libraries_of(pid):
    """Names of the libraries that the process has loaded."""
    with open(f"/proc/{pid}/maps", encoding="utf-8") as maps:
        return set(re.findall(r"/([^/\n]+)\.so\b", maps.read()))


class Update(unittest.TestCase):
    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)
        self.folder = self._folder.name
        self.home = os.path.join(self.folder, "home")
        os.mkdir(self.home)
        self.opener = Opener(self.folder)
        self.maker = Maker(self.folder)
        self.server = self.entered(WebServer())
        self.publish(self.server)

    def entered(self, manager):
        self.addCleanup(manager.__exit__, None, None, None)
        return manager.__enter__()

    def publish(self, server, **more):
        signature = self.maker.sign(PACKAGE)
        feed = self.maker.feed(server.address("/pelmora_2.0_amd64.deb"), PACKAGE, signature, **more)
        server.answer("/feed.xml", "application/rss+xml", feed)
        server.answer("/pelmora_2.0_amd64.deb", "application/octet-stream", PACKAGE)

    def pelmora(self, feed=None):
        feed = feed or self.server.address("/feed.xml")
        tree = tree_with(self.folder, {"SUFeedURL": feed, "SUPublicEDKey": self.maker.public_key()})
        return self.start(os.path.join(tree, "bin", "pelmora"))

    def start(self, program):
        self.updates = os.path.join(os.path.dirname(os.path.dirname(program)), "libexec", "pelmora", "pelmora-update")
        environment = {**self.opener.environment, "XDG_CACHE_HOME": os.path.join(self.home, "cache")}
        return Application(program, "--simulate", home=self.home, environment=environment)

    def downloads(self):
        """The content of the folder of downloads."""
        folder = os.path.join(self.home, "cache", "MORVEL", "Pelmora", "updates")
        return [os.path.join(path, name) for path, folders, names in os.walk(folder) for name in folders + names]

    def ask(self, pelmora):
        """Asks for updates; the program whose window opens."""
        pelmora.find("push button", "Lire")
        pelmora.choose("Rechercher les mises à jour…")
        updates = Running(self.updates)
        updates.find("dialog", WINDOW)
        return updates

    def test_an_update_is_downloaded_verified_and_opened(self):
        self.publish(self.server, notes="<h2>Nouveau</h2><p>L’été &amp; l’hiver</p>")
        with self.pelmora() as pelmora:
            pelmora.find("push button", "Lire")
            self.assertEqual(self.server.requests, [])
            updates = self.ask(pelmora)
            updates.find("label", AVAILABLE)
            updates.find("label", "Vous utilisez la version .*\\.")
            self.assertEqual(updates.text_of("text", "Nouveautés de cette version"), "Nouveau\nL’été & l’hiver")
            self.assertEqual(self.downloads(), [])
            updates.press("push button", "Télécharger")
            updates.find("label", "La version 2\\.0 est prête à être installée\\.")
            wait(self.opener.opened)
            [address] = self.opener.opened()
            path = address.removeprefix("file://")
            with open(path, "rb") as file:
                self.assertEqual(file.read(), PACKAGE)
            self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o600)
            self.assertEqual(os.path.basename(path), "pelmora_2.0_amd64.deb")
            updates.press("push button", "OK")
            updates.process.wait()
        self.assertEqual([path for path, _ in self.server.requests], ["/feed.xml", "/pelmora_2.0_amd64.deb"])
        for _, headers in self.server.requests:
            self.assertEqual(headers["User-Agent"], "Pelmora")
            self.assertEqual(headers["Accept-Language"], "*")
            self.assertFalse({"Cookie", "Referer", "Authorization"} & set(headers))

    def test_an_altered_package_is_refused_and_leaves_nothing(self):
        self.server.answer("/pelmora_2.0_amd64.deb", "application/octet-stream", PACKAGE[:-1] + b"?")
        with self.pelmora() as pelmora:
            updates = self.ask(pelmora)
            updates.press("push button", "Télécharger")
            updates.find("label", FAILED)
            updates.find("label", "Le fichier téléchargé n’est pas celui que l’éditeur de Pelmora a signé\u202f: .*")
            self.assertEqual(self.opener.opened(), [])
            self.assertEqual(self.downloads(), [])

    def test_a_download_shows_its_progress_and_can_be_cancelled(self):
        self.server.answer("/pelmora_2.0_amd64.deb", "application/octet-stream", PACKAGE, first=len(PACKAGE) // 2)
        with self.pelmora() as pelmora:
            updates = self.ask(pelmora)
            updates.press("push button", "Télécharger")
            updates.find("progress bar", "Avancement")
            updates.find("label", "750,0\u00a0ko sur 1,5\u00a0Mo")
            self.assertNotEqual(self.downloads(), [])
            updates.press("push button", "Annuler")
            updates.find("label", AVAILABLE)
            self.assertEqual(self.downloads(), [])
            updates.press("push button", "Plus tard")
            updates.process.wait()

    def test_quitting_ends_a_download_and_leaves_nothing(self):
        self.server.answer("/pelmora_2.0_amd64.deb", "application/octet-stream", PACKAGE, first=len(PACKAGE) // 2)
        leave = {"menu": lambda pelmora: pelmora.choose("Quitter Pelmora"), "signal": lambda pelmora: pelmora.terminate()}
        for way, quit_it in leave.items():
            with self.subTest(way), self.pelmora() as pelmora:
                updates = self.ask(pelmora)
                updates.press("push button", "Télécharger")
                updates.find("label", "750,0\u00a0ko sur 1,5\u00a0Mo")
                self.assertNotEqual(self.downloads(), [])
                quit_it(pelmora)
                wait(lambda: pelmora.process.poll() is not None)
                self.assertEqual(pelmora.process.returncode, 0)
                updates.process.wait()
                self.assertEqual(self.downloads(), [])

    def strike(self, updates, name):
        # The window manager may give a new window the focus late.
        wait(lambda: updates.find("dialog", WINDOW).get_state_set().contains(Atspi.StateType.ACTIVE))
        key(name)

    def test_the_window_is_driven_by_the_keyboard(self):
        with self.pelmora() as pelmora:
            updates = self.ask(pelmora)
            updates.find("label", AVAILABLE)
            self.strike(updates, "Escape")
            updates.process.wait()
            updates = self.ask(pelmora)
            updates.find("label", AVAILABLE)
            self.strike(updates, "Return")
            updates.find("label", "La version 2\\.0 est prête à être installée\\.")

    def test_who_is_up_to_date_is_told_so(self):
        self.publish(self.server, version="0.0.1")
        with self.pelmora() as pelmora:
            updates = self.ask(pelmora)
            updates.find("label", "Pelmora est à jour\\.")

    def test_a_server_that_nobody_vouches_for_is_refused(self):
        server = self.entered(WebServer(encrypted=True))
        self.publish(server)
        with self.pelmora(server.address("/feed.xml")) as pelmora:
            updates = self.ask(pelmora)
            updates.find("label", FAILED)
            updates.find("label", "Le serveur des mises à jour n’a pas pu prouver son identité\\. .*")
        self.assertEqual(server.requests, [])

    def test_a_second_question_brings_the_window_to_the_front(self):
        with self.pelmora() as pelmora:
            updates = self.ask(pelmora)
            updates.find("label", AVAILABLE)
            pelmora.choose("Rechercher les mises à jour…")
            wait(lambda: updates.find("dialog", WINDOW).get_state_set().contains(Atspi.StateType.ACTIVE))
            self.assertEqual(processes_of(self.updates), [updates.process.pid])
        self.assertEqual([path for path, _ in self.server.requests], ["/feed.xml"])

    def test_the_search_ends_with_an_application_that_is_killed(self):
        with self.pelmora() as pelmora:
            updates = self.ask(pelmora)
        updates.process.wait()

    def test_a_missing_program_is_told_as_a_failure(self):
        tree = tree_with(self.folder, {"SUFeedURL": self.server.address("/feed.xml")})
        os.remove(os.path.join(tree, "libexec", "pelmora", "pelmora-update"))
        with self.start(os.path.join(tree, "bin", "pelmora")) as pelmora:
            pelmora.find("push button", "Lire")
            pelmora.choose("Rechercher les mises à jour…")
            pelmora.find("label", FAILED)
            pelmora.find("label", "Le programme des mises à jour n’a pas pu être lancé\u00a0: .*")

    def test_the_date_of_the_check_is_kept_for_the_application(self):
        with self.pelmora() as pelmora:
            updates = self.ask(pelmora)
            updates.find("label", AVAILABLE)
        with open(os.path.join(self.home, "config", "MORVEL", "Pelmora.conf"), encoding="utf-8") as settings:
            self.assertRegex(settings.read(), r"(?m)^SULastCheckTime=@DateTime")

    def test_the_process_that_has_patients_data_has_no_network(self):
        with self.pelmora() as pelmora:
            updates = self.ask(pelmora)
            updates.find("label", AVAILABLE)
            self.assertEqual(set(NETWORK) & libraries_of(updates.process.pid), set(NETWORK))
            self.assertEqual(set(NETWORK) & libraries_of(pelmora.process.pid), set())


if __name__ == "__main__":
    unittest.main()
