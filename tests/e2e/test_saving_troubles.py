"""Saves that fail or are slow, reads that fail, and what the window shows.

Usage: test_saving_troubles.py STAGE SLOW_DISK, in a mount namespace of its own"""

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from bell import Bell
from desktop import Application, Atspi, GLib, key, wait
from disks import fill, mount
from specimencard import FILE, SUMMARY, read_card
from windows import iconify, is_iconified, shown_windows

STAGE, SLOW_DISK = sys.argv.pop(1), sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
TITLE = "Pelmora par MORVEL"
SAVED = "L'attestation a bien été enregistrée."
RESULT = "Enregistrée\xa0: SPECIMEN Hélène\\.pdf"
NOT_SAVED = "L’attestation n’est pas enregistrée"
WRITING = "Enregistrement en cours…"


class Gate:
    """A disk whose writes wait while the gate is closed."""

    def __init__(self, folder):
        self._path = os.path.join(folder, "gate")
        self.environment = {"LD_PRELOAD": os.pathsep.join(filter(None, (os.environ.get("LD_PRELOAD"), SLOW_DISK))),
                            "SLOW_DISK": self._path}

    def shut(self):
        open(self._path, "w", encoding="utf-8").close()

    def open(self):
        os.remove(self._path)


class Notifications:
    """The notifications that screen readers announce."""

    def __init__(self):
        self.said = []
        self._listener = Atspi.EventListener.new(self._hear)
        self._listener.register("object:state-changed:showing")

    def close(self):
        self._listener.deregister("object:state-changed:showing")

    def _hear(self, event):
        try:
            if event.detail1 and event.source.get_role_name() == "notification":
                self.said.append(event.source.get_name())
        except GLib.GError:
            pass

    def wait_for(self, text):
        def heard():
            while GLib.MainContext.default().iteration(False):
                pass
            return text in self.said
        wait(heard)


class SavingTroubles(unittest.TestCase):
    def setUp(self):
        self.home = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.home)
        self.folder = os.path.join(self.home, "attestations")
        self.card = os.path.join(self.home, "card.xml")
        shutil.copy(SPECIMEN, self.card)
        settings = os.path.join(self.home, "config", "MORVEL")
        os.makedirs(settings)
        with open(os.path.join(settings, "Pelmora.conf"), "w", encoding="utf-8") as file:
            file.write(f'[General]\nMVAttestationsFolder="{self.folder}"\n')

    def start(self, environment=None):
        return Application(PELMORA, f"--simulate={self.card}", home=self.home, environment=environment)

    def make(self, *arguments):
        """Mounts something in the place of the attestations' folder."""
        os.makedirs(self.folder, exist_ok=True)
        mount(*arguments, self.folder)
        self.addCleanup(subprocess.run, ["umount", "--lazy", self.folder], check=True)

    def close_alert(self, pelmora, title, text):
        pelmora.find("alert", title)
        pelmora.find("label", text)
        pelmora.press("push button", "OK")
        pelmora.wait_until_gone("alert", title)

    def assert_not_saved(self, pelmora, reason, remedy):
        """The success is announced, then the failure is shown, and stays in the panel."""
        pelmora.press("push button", "Enregistrer")
        self.close_alert(pelmora, "Enregistrement de l'attestation", SAVED)
        self.close_alert(pelmora, NOT_SAVED, f"Malgré le message précédent, rien n’a été écrit\xa0: .* {reason}\\.\n\n"
                                             f"{remedy}, puis enregistrez de nouveau\\.")
        pelmora.find("label", f"Lue le .*\nNon enregistrée\xa0: {reason} \\(«\u202fSPECIMEN Hélène\\.pdf\u202f»\\)\\.")

    def assert_saved(self, pelmora):
        pelmora.press("push button", "Enregistrer")
        self.close_alert(pelmora, "Enregistrement de l'attestation", SAVED)
        self.assertIsNone(pelmora.find_now("alert", ".*"))
        pelmora.find("label", f"Lue le .*\n{RESULT}")

    def test_a_full_disk_is_told_until_the_next_save(self):
        self.make("-t", "tmpfs", "-o", "size=64k", "tmpfs")
        filling = os.path.join(self.folder, "filling")
        with self.start() as pelmora:
            read_card(pelmora)
            fill(filling)
            self.assert_not_saved(pelmora, "il n’y a plus de place sur le disque", "Libérez de la place, .*")
            self.assertEqual(os.listdir(self.folder), ["filling"])
            read_card(pelmora)
            pelmora.find("label", "Lue le .*\nNon enregistrée.*")
            os.remove(filling)
            self.assert_saved(pelmora)
            self.assertEqual(os.listdir(self.folder), [FILE])

    def test_a_read_only_disk_is_told(self):
        self.make("-t", "tmpfs", "-o", "ro", "tmpfs")
        with self.start() as pelmora:
            read_card(pelmora)
            self.assert_not_saved(pelmora, "le disque est en lecture seule", "Choisissez un dossier sur un autre disque .*")

    def test_an_unusable_folder_is_told_in_a_window_that_is_seen_and_said_to_screen_readers(self):
        open(self.folder, "w", encoding="utf-8").close()
        told = "Non enregistrée\xa0: le dossier est inutilisable. Changez-le dans les préférences."
        with self.start() as pelmora:
            read_card(pelmora)
            bell, notifications = Bell(), Notifications()
            self.addCleanup(bell.close)
            self.addCleanup(notifications.close)
            iconify(TITLE)
            pelmora.choose("Enregistrer")
            wait(lambda: bell.count() == 1)
            wait(lambda: not is_iconified(TITLE))
            pelmora.find("label", f"Lue le .*\n{told}")
            notifications.wait_for(told)
            self.assertIsNone(pelmora.find_now("alert", ".*"))
            os.remove(self.folder)
            self.assert_saved(pelmora)

    def test_where_no_bell_rings_the_panel_says_why_nothing_was_saved(self):
        open(self.folder, "w", encoding="utf-8").close()
        with self.start() as pelmora:
            read_card(pelmora)
            pelmora.press("push button", "Enregistrer")
            pelmora.find("label", "Lue le .*\nNon enregistrée\xa0: le dossier est inutilisable\\. .*")
            self.assertIsNone(pelmora.find_now("alert", ".*"))

    def test_a_failed_read_is_told_until_the_next_card(self):
        with self.start() as pelmora:
            os.rename(self.card, self.card + ".out")
            for summary, line in (("Aucune", "Lecture échouée à \\d\\d:\\d\\d"),
                                  (SUMMARY, "Lecture échouée à \\d\\d:\\d\\d – carte précédente, lue à \\d\\d:\\d\\d")):
                wait(lambda: pelmora.is_enabled("push button", "Voir"))
                pelmora.press("push button", "Lire")
                self.close_alert(pelmora, "Pelmora", "La carte vitale n'est pas dans le lecteur\\.")
                pelmora.find("label", line)
                described = pelmora.find("label", summary).get_description()
                self.assertEqual(described, "" if summary == "Aucune"
                                 else "Carte précédente\xa0: la dernière lecture n’a pas abouti.")
                os.rename(self.card + ".out", self.card)
                read_card(pelmora)
                pelmora.find("label", "Lue le [^\n]*")
                self.assertEqual(pelmora.find("label", SUMMARY).get_description(), "")
                os.rename(self.card, self.card + ".out")

    def test_a_slow_disk_leaves_the_window_alive(self):
        gate = Gate(self.home)
        other = os.path.join(self.home, "other.xml")
        with open(SPECIMEN, encoding="utf-8") as card, open(other, "w", encoding="utf-8") as file:
            file.write(card.read().replace("SPECIMEN", "AUTRE"))
        with self.start(gate.environment) as pelmora:
            read_card(pelmora)
            gate.shut()
            pelmora.press("push button", "Enregistrer")
            pelmora.find("label", WRITING)
            # The window responds and can be resized while the disk does not respond.
            for size in range(620, 720, 10):
                before = time.monotonic()
                subprocess.run(["xdotool", "windowsize", *shown_windows(TITLE), str(size), "500"], check=True)
                wait(lambda: Atspi.Component.get_extents(pelmora.find("frame", TITLE),
                                                         Atspi.CoordType.SCREEN).width == size)
                self.assertLess(time.monotonic() - before, 1)
            # The card that is being saved is not replaced.
            subprocess.run([PELMORA, f"--simulate={self.card}", other], check=True, timeout=10,
                           env={**os.environ, "HOME": self.home, "XDG_CONFIG_HOME": os.path.join(self.home, "config")})
            pelmora.find("label", "Lue le .*\nUn enregistrement est en cours\\.")
            pelmora.find("label", SUMMARY)
            self.assertEqual([name for name in os.listdir(self.folder) if name.endswith(".pdf")], [])
            self.assertIsNone(pelmora.find_now("alert", ".*"))
            gate.open()
            self.close_alert(pelmora, "Enregistrement de l'attestation", SAVED)
            self.assertIsNone(pelmora.find_now("label", WRITING))
            pelmora.find("label", f"Lue le .*\n{RESULT}")
            pelmora.find("notification", RESULT)
            self.assertEqual(os.listdir(self.folder), [FILE])

    def test_a_slow_disk_leaves_the_windows_alive_when_the_print_goes_to_a_file(self):
        gate = Gate(self.home)
        with self.start({**gate.environment, "CUPS_SERVER": os.path.join(self.home, "absent")}) as pelmora:
            read_card(pelmora)
            pelmora.press("push button", "Imprimer")
            dialog = ("dialog", "Imprimer l’attestation – .*")
            pelmora.find(*dialog)
            gate.shut()
            pelmora.press_inside(dialog, "Imprimer")
            pelmora.find("label", WRITING)
            self.assertIsNone(pelmora.find_now(*dialog))
            gate.open()
            pelmora.wait_until_gone("label", WRITING)
            self.assertTrue(os.path.exists(os.path.join(self.folder, FILE)))
            self.assertIsNone(pelmora.find_now("alert", ".*"))

    def test_who_leaves_meanwhile_leaves_a_whole_file(self):
        for leave in (lambda pelmora: key("ctrl+q"), lambda pelmora: pelmora.process.send_signal(signal.SIGTERM)):
            shutil.rmtree(self.folder, ignore_errors=True)
            gate = Gate(self.home)
            with self.start(gate.environment) as pelmora:
                read_card(pelmora)
                gate.shut()
                pelmora.press("push button", "Enregistrer")
                pelmora.find("label", WRITING)
                leave(pelmora)
                pelmora.find("label", f"{WRITING} Pelmora se fermera ensuite\\.")
                gate.open()
                self.assertEqual(pelmora.process.wait(timeout=10), 0)
            self.assertEqual(os.listdir(self.folder), [FILE])

    def test_who_leaves_meanwhile_is_told_that_nothing_was_written(self):
        gate = Gate(self.home)
        with self.start(gate.environment) as pelmora:
            read_card(pelmora)
            gate.shut()
            pelmora.press("push button", "Enregistrer")
            pelmora.find("label", WRITING)
            key("ctrl+q")
            pelmora.find("label", f"{WRITING} Pelmora se fermera ensuite\\.")
            os.makedirs(os.path.join(self.folder, FILE, "in the way"))
            gate.open()
            self.close_alert(pelmora, "Enregistrement de l'attestation", SAVED)
            self.close_alert(pelmora, NOT_SAVED, "Malgré .* un dossier porte déjà ce nom\\..*")
            key("ctrl+q")
            self.assertEqual(pelmora.process.wait(timeout=10), 0)


if __name__ == "__main__":
    unittest.main()
