"""Software updates, as a user meets them, from a maker's server on loopback. Usage: test_update.py STAGE"""

import os
import plistlib
import shutil
import stat
import sys
import tempfile
import unittest

from desktop import Application, Atspi, Opener, key, wait
from updates import Maker, WebServer

STAGE = sys.argv.pop(1)
PACKAGE = b"A package of a newer version. " * 50_000
WINDOW = "Mise à jour de Pelmora"
FAILED = "Aucune mise à jour n’a pu être obtenue\\."
AVAILABLE = "La version 2\\.0 de Pelmora est disponible\\."


def tree_with(folder, information):
    """A copy of the installed tree whose information dictionary says more."""
    tree = os.path.join(tempfile.mkdtemp(dir=folder), "tree")
    shutil.copytree(STAGE, tree)
    path = os.path.join(tree, "share", "pelmora", "Info.plist")
    with open(path, "rb") as file:
        values = plistlib.load(file)
    with open(path, "wb") as file:
        plistlib.dump({**values, **information}, file)
    return tree


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
        environment = {**self.opener.environment, "XDG_CACHE_HOME": os.path.join(self.home, "cache")}
        return Application(program, "--simulate", home=self.home, environment=environment)

    def downloads(self):
        """What lies in the folder of downloads."""
        folder = os.path.join(self.home, "cache", "MORVEL", "Pelmora", "updates")
        return [os.path.join(path, name) for path, folders, names in os.walk(folder) for name in folders + names]

    def ask(self, pelmora):
        pelmora.find("push button", "Lire")
        pelmora.choose("Rechercher les mises à jour…")
        pelmora.find("dialog", WINDOW)

    def test_an_update_is_downloaded_verified_and_opened(self):
        self.publish(self.server, notes="<h2>Nouveau</h2><p>L’été &amp; l’hiver</p>")
        with self.pelmora() as pelmora:
            pelmora.find("push button", "Lire")
            self.assertEqual(self.server.requests, [])
            self.ask(pelmora)
            pelmora.find("label", AVAILABLE)
            pelmora.find("label", "Vous utilisez la version .*\\.")
            self.assertEqual(pelmora.text_of("text", "Nouveautés de cette version"), "Nouveau\nL’été & l’hiver")
            self.assertEqual(self.downloads(), [])
            pelmora.press("push button", "Télécharger")
            pelmora.find("label", "La version 2\\.0 est prête à être installée\\.")
            wait(self.opener.opened)
            [address] = self.opener.opened()
            path = address.removeprefix("file://")
            with open(path, "rb") as file:
                self.assertEqual(file.read(), PACKAGE)
            self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o600)
            self.assertEqual(os.path.basename(path), "pelmora_2.0_amd64.deb")
            pelmora.press("push button", "OK")
            pelmora.wait_until_gone("dialog", WINDOW)
        self.assertEqual([path for path, _ in self.server.requests], ["/feed.xml", "/pelmora_2.0_amd64.deb"])
        for _, headers in self.server.requests:
            self.assertEqual(headers["User-Agent"], "Pelmora")
            self.assertEqual(headers["Accept-Language"], "*")
            self.assertFalse({"Cookie", "Referer", "Authorization"} & set(headers))

    def test_an_altered_package_is_refused_and_leaves_nothing(self):
        self.server.answer("/pelmora_2.0_amd64.deb", "application/octet-stream", PACKAGE[:-1] + b"?")
        with self.pelmora() as pelmora:
            self.ask(pelmora)
            pelmora.press("push button", "Télécharger")
            pelmora.find("label", FAILED)
            pelmora.find("label", "Le fichier téléchargé n’est pas celui que l’éditeur de Pelmora a signé\u202f: .*")
            self.assertEqual(self.opener.opened(), [])
            self.assertEqual(self.downloads(), [])

    def test_a_download_shows_its_progress_and_can_be_cancelled(self):
        self.server.answer("/pelmora_2.0_amd64.deb", "application/octet-stream", PACKAGE, first=len(PACKAGE) // 2)
        with self.pelmora() as pelmora:
            self.ask(pelmora)
            pelmora.press("push button", "Télécharger")
            pelmora.find("progress bar", "Avancement")
            pelmora.find("label", "750,0\u00a0ko sur 1,5\u00a0Mo")
            self.assertNotEqual(self.downloads(), [])
            pelmora.press("push button", "Annuler")
            pelmora.find("label", AVAILABLE)
            self.assertEqual(self.downloads(), [])
            pelmora.press("push button", "Plus tard")
            pelmora.wait_until_gone("dialog", WINDOW)

    def test_quitting_ends_a_download_and_leaves_nothing(self):
        self.server.answer("/pelmora_2.0_amd64.deb", "application/octet-stream", PACKAGE, first=len(PACKAGE) // 2)
        leave = {"menu": lambda pelmora: pelmora.choose("Quitter Pelmora"), "signal": lambda pelmora: pelmora.terminate()}
        for way, quit_it in leave.items():
            with self.subTest(way), self.pelmora() as pelmora:
                self.ask(pelmora)
                pelmora.press("push button", "Télécharger")
                pelmora.find("label", "750,0\u00a0ko sur 1,5\u00a0Mo")
                self.assertNotEqual(self.downloads(), [])
                quit_it(pelmora)
                wait(lambda: pelmora.process.poll() is not None)
                self.assertEqual(pelmora.process.returncode, 0)
                self.assertEqual(self.downloads(), [])

    def strike(self, pelmora, name):
        # The window manager gives a new window the keyboard when it gets round to it.
        wait(lambda: pelmora.find("dialog", WINDOW).get_state_set().contains(Atspi.StateType.ACTIVE))
        key(name)

    def test_the_window_is_driven_by_the_keyboard(self):
        with self.pelmora() as pelmora:
            self.ask(pelmora)
            pelmora.find("label", AVAILABLE)
            self.strike(pelmora, "Escape")
            pelmora.wait_until_gone("dialog", WINDOW)
            self.ask(pelmora)
            pelmora.find("label", AVAILABLE)
            self.strike(pelmora, "Return")
            pelmora.find("label", "La version 2\\.0 est prête à être installée\\.")

    def test_who_is_up_to_date_is_told_so(self):
        self.publish(self.server, version="0.0.1")
        with self.pelmora() as pelmora:
            self.ask(pelmora)
            pelmora.find("label", "Pelmora est à jour\\.")

    def test_a_server_that_nobody_vouches_for_is_refused(self):
        server = self.entered(WebServer(encrypted=True))
        self.publish(server)
        with self.pelmora(server.address("/feed.xml")) as pelmora:
            self.ask(pelmora)
            pelmora.find("label", FAILED)
            pelmora.find("label", "Le serveur des mises à jour n’a pas pu prouver son identité\\. .*")
        self.assertEqual(server.requests, [])

    def test_without_a_feed_a_kind_message_says_so(self):
        with self.start(os.path.join(STAGE, "bin", "pelmora")) as pelmora:
            self.ask(pelmora)
            pelmora.find("label", "Cette version de Pelmora ne sait pas où chercher ses mises à jour\\. Demandez à "
                                  "votre fournisseur s’il en existe une plus récente\\.")
            pelmora.press("push button", "OK")
            pelmora.wait_until_gone("dialog", WINDOW)


if __name__ == "__main__":
    unittest.main()
