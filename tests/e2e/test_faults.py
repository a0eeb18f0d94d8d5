"""The application on a machine with faults.

Usage: test_faults.py STAGE FAKE_SERVICE, in a mount namespace of its own"""

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from bell import Bell
from cardservice import FakeService
from desktop import Application, Atspi, Opener, key, wait
from disks import fill, mount
from specimencard import FILE, SUMMARY, read_card
from waiting import is_running
from windows import shown_windows, wait_until_shown

STAGE, FAKE_SERVICE = sys.argv.pop(1), sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
TITLE = "Pelmora par MORVEL"
GENERAL_ERROR = "L’opération n’a pas pu s’achever\\. \\(erreur Pelmora -10\\.\\)"
SAVED = "L'attestation a bien été enregistrée."


class Terminal:
    """A terminal for a program's standard error, where the log goes too."""

    def __init__(self):
        self._master, self._slave = os.openpty()
        self.command = ["/bin/sh", "-c", f'exec "$0" "$@" 2>{os.ttyname(self._slave)}', PELMORA]
        os.set_blocking(self._master, False)
        self._text = b""

    def close(self):
        os.close(self._master)
        os.close(self._slave)

    def text(self):
        """All that was written so far."""
        try:
            while part := os.read(self._master, 65536):
                self._text += part
        except BlockingIOError:
            pass
        return self._text.decode()


class Faults(unittest.TestCase):
    def setUp(self):
        self.home = tempfile.mkdtemp()
        self.mounted = []
        self.terminal = Terminal()
        self.addCleanup(self.clean)

    def clean(self):
        self.terminal.close()
        for path in reversed(self.mounted):
            subprocess.run(["umount", "--lazy", path], check=True)
        shutil.rmtree(self.home)

    def path(self, *names):
        return os.path.join(self.home, *names)

    def settings_file(self):
        folder = self.path("config", "MORVEL")
        os.makedirs(folder, exist_ok=True)
        return os.path.join(folder, "Pelmora.conf")

    def write_settings(self, content):
        with open(self.settings_file(), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())

    def make_read_only(self, path):
        mount("--bind", path, path)
        self.mounted.append(path)
        mount("-o", "remount,bind,ro", path)

    def attestations_in(self, *names):
        folder = self.path(*names)
        self.write_settings(f'[General]\nMVAttestationsFolder="{folder}"\n')
        return folder

    def start(self, environment=None, arguments=("--simulate",)):
        return Application(*self.terminal.command, *arguments, home=self.home, environment=environment)

    def save(self, pelmora, fails=False):
        """Saves the card; checks the success message, a warning after a failure, and that the application goes on."""
        pelmora.press("push button", "Enregistrer")
        alert = pelmora.find("alert", "Enregistrement de l'attestation")
        pelmora.find("label", SAVED)
        pelmora.press("push button", "OK")
        pelmora.wait_until_gone("alert", alert.get_name())
        if fails:
            pelmora.find("alert", "L’attestation n’est pas enregistrée")
            pelmora.press("push button", "OK")
        pelmora.wait_until_gone("alert", ".*")

    def assert_works_without_saving(self, pelmora):
        """A save beeps, shows the reason in the panel, and changes nothing else."""
        bell = Bell()
        self.addCleanup(bell.close)
        pelmora.press("push button", "Enregistrer")
        wait(lambda: bell.count() == 1)
        pelmora.find("label", ".*\nNon enregistrée\xa0: le dossier est inutilisable\\. .*")
        pelmora.press("push button", "Voir")
        pelmora.find("frame", "Hélène SPECIMEN")
        self.assertIsNone(pelmora.find_now("alert", ".*"))
        self.assertEqual(bell.count(), 1)

    def recents(self, pelmora):
        """The entries of the submenu that are files."""
        names = pelmora.entries("Recents")
        self.assertEqual(names.pop(), "Effacer le menu")
        return [name for name in names if name]

    def test_broken_settings_count_as_none(self):
        for content in (b"\xff\xfe\x00[[[==\n\x00" * 1000, b"[General]\nMVRecentsAttestation=@Variant(\\0\\0\\0)\n"
                        b"MVStatusItemMenu=@Invalid()\nMVLVitMode=@ByteArray(x)\n"):
            with self.subTest(content=content[:20]):
                self.write_settings(content)
                with self.start() as pelmora:
                    read_card(pelmora)
                    self.save(pelmora)
                self.assertTrue(os.path.exists(self.path("Documents", "Attestations Pelmora", FILE)))

    def test_a_folder_in_the_place_of_the_settings_is_no_hindrance(self):
        os.mkdir(self.settings_file())
        with self.start() as pelmora:
            read_card(pelmora)
            self.save(pelmora)

    def test_read_only_settings_last_for_the_run(self):
        folder = self.attestations_in("attestations")
        self.make_read_only(self.path("config"))
        with self.start() as pelmora:
            read_card(pelmora)
            self.save(pelmora)
            self.assertTrue(os.path.exists(os.path.join(folder, FILE)))
            wait(lambda: self.recents(pelmora) == [FILE])
            pelmora.choose("Effacer le menu")
            wait(lambda: self.recents(pelmora) == [])

    def test_a_file_in_the_place_of_the_folder_beeps(self):
        folder = self.attestations_in("attestations")
        with open(folder, "w", encoding="utf-8") as file:
            file.write("mine")
        with self.start() as pelmora:
            read_card(pelmora)
            self.assert_works_without_saving(pelmora)
            self.assertEqual(self.recents(pelmora), [])
        with open(folder, encoding="utf-8") as file:
            self.assertEqual(file.read(), "mine")

    def test_a_read_only_folder_is_logged_without_the_patients_name(self):
        folder = self.attestations_in("attestations")
        os.mkdir(folder)
        self.make_read_only(folder)
        with self.start() as pelmora:
            read_card(pelmora)
            self.save(pelmora, fails=True)
            self.assertEqual(self.recents(pelmora), [FILE])
            self.assertEqual(os.listdir(folder), [])
            wait(lambda: "le disque est en lecture seule" in self.terminal.text())
            self.assertNotIn("SPECIMEN", self.terminal.text())

    def test_a_full_disk_leaves_the_older_file_whole(self):
        folder = self.attestations_in("attestations")
        os.mkdir(folder)
        mount("-t", "tmpfs", "-o", "size=256k", "tmpfs", folder)
        self.mounted.append(folder)
        with self.start() as pelmora:
            read_card(pelmora)
            self.save(pelmora)
            with open(os.path.join(folder, FILE), "rb") as file:
                before = file.read()
            fill(os.path.join(folder, "filling"))
            self.save(pelmora, fails=True)
            wait(lambda: "il n’y a plus de place sur le disque" in self.terminal.text())
            self.assertEqual(sorted(os.listdir(folder)), [FILE, "filling"])
            with open(os.path.join(folder, FILE), "rb") as file:
                self.assertEqual(file.read(), before)
            self.assertNotIn("SPECIMEN", self.terminal.text())

    def test_a_folder_with_blanks_and_accents_is_used_as_it_is_written(self):
        opener = Opener(self.home)
        folder = self.attestations_in("Médecins, 2ᵉ étage #1; 100 %25", "à côté")
        with self.start(opener.environment) as pelmora:
            read_card(pelmora)
            self.save(pelmora)
            self.assertEqual(os.stat(os.path.join(folder, FILE)).st_mode & 0o7777, 0o600)
            pelmora.choose("Ouvrir le dossier des attestations")
            wait(lambda: len(opener.opened()) == 1)
            pelmora.choose(FILE)
            wait(lambda: len(opener.opened()) == 2)
        link = "file://" + self.home + "/M%C3%A9decins,%202%E1%B5%89%20%C3%A9tage%20%231;%20100%20%2525/%C3%A0%20c%C3%B4t%C3%A9"
        self.assertEqual(opener.opened(), [link, link + "/SPECIMEN%20H%C3%A9l%C3%A8ne.pdf"])

    def test_ten_thousand_planted_recents_cost_no_time(self):
        lines = "".join(f"{number}\\value=/folder/{number}.pdf\n" for number in range(1, 10_001))
        self.write_settings(f"[MVRecentsAttestation]\n{lines}size=2000000000\n")
        start = time.monotonic()
        with self.start() as pelmora:
            wait_until_shown(TITLE)
            self.assertLess(time.monotonic() - start, 3)
            self.assertEqual(self.recents(pelmora), [f"{number}.pdf" for number in range(1, 11)])
            pelmora.choose("Effacer le menu")
            wait(lambda: self.recents(pelmora) == [])

    def test_a_recent_file_that_is_gone_is_left_to_the_desktop(self):
        opener = Opener(self.home)
        self.write_settings("[MVRecentsAttestation]\n1\\value=/gone/a & b.pdf\nsize=1\n")
        with self.start(opener.environment) as pelmora:
            self.assertEqual(self.recents(pelmora), ["a & b.pdf"])
            pelmora.choose("a & b.pdf")
            wait(lambda: opener.opened() == ["file:///gone/a%20&%20b.pdf"])
            read_card(pelmora)
            self.assertIsNone(pelmora.find_now("alert", ".*"))

    def test_without_a_session_bus_it_works_as_ever(self):
        folder = self.attestations_in("attestations")
        with self.start({"DBUS_SESSION_BUS_ADDRESS": "unix:path=/absent/bus"}):
            wait_until_shown(TITLE)
            subprocess.run(["xdotool", "windowactivate", "--sync", *shown_windows(TITLE)], check=True)
            # Without a session bus the test cannot see what is enabled. The key works once the card service is bound.
            wait(lambda: key("ctrl+s") or os.path.exists(os.path.join(folder, FILE)))

    def test_a_home_where_nothing_can_be_written_is_no_hindrance(self):
        self.make_read_only(self.home)
        with self.start() as pelmora:
            read_card(pelmora)
            self.assert_works_without_saving(pelmora)
            pelmora.choose("Ouvrir le dossier des attestations")
            wait(lambda: self.terminal.text().count("Error on folder create") == 2)
            self.assertNotIn("SPECIMEN", self.terminal.text())
            self.assertEqual(pelmora.terminate(), 0)

    def test_a_home_that_does_not_exist_is_no_hindrance(self):
        with self.start({"HOME": "/proc/absent", "XDG_CONFIG_HOME": None}) as pelmora:
            read_card(pelmora)
            self.assert_works_without_saving(pelmora)

    def test_without_a_program_for_mail_and_files_nothing_happens(self):
        with self.start({"PATH": "/absent"}) as pelmora:
            pelmora.press("push button", "Suggestion")
            pelmora.choose("Ouvrir le dossier des attestations")
            read_card(pelmora)
            self.assertIsNone(pelmora.find_now("alert", ".*"))

    def test_the_alert_of_a_start_without_a_reader_lies_over_the_window(self):
        with self.start(arguments=()) as pelmora:
            pelmora.find("label", "Aucun lecteur de carte n'a été trouvé\\. Vérifiez les branchements\\.")
            window, alert = (Atspi.Component.get_extents(pelmora.find(role, name), Atspi.CoordType.SCREEN)
                             for role, name in (("frame", TITLE), ("alert", "Pelmora")))
            self.assertLess(abs(window.x + window.width / 2 - alert.x - alert.width / 2), 20)
            self.assertLess(abs(window.y + window.height / 2 - alert.y - alert.height / 2), 40)

    def test_a_card_service_that_was_killed_is_started_again(self):
        with self.start() as pelmora:
            wait(lambda: pelmora.is_enabled("push button", "Voir"))
            service = pelmora.children()[0]
            os.kill(service, signal.SIGKILL)
            wait(lambda: not is_running(service))
            read_card(pelmora)
            self.assertIsNone(pelmora.find_now("alert", ".*"))

    def test_a_card_service_that_stalls_leaves_the_window_alive(self):
        service = FakeService(self.home, FAKE_SERVICE).doing("vitale_read", "silent")
        with self.start(arguments=("--card-service", service.path)) as pelmora:
            wait(lambda: pelmora.is_enabled("push button", "Voir"))
            pelmora.press("push button", "Lire")
            pelmora.find("label", "Lecture de la carte Vitale\\.\\.\\.")
            subprocess.run(["xdotool", "windowsize", "--sync", *shown_windows(TITLE), "900", "700"], check=True)
            os.kill(pelmora.children()[0], signal.SIGKILL)
            pelmora.find("label", GENERAL_ERROR)
            pelmora.wait_until_gone("label", "Lecture de la carte Vitale\\.\\.\\.")
            pelmora.press("push button", "OK")
            pelmora.find("label", "Aucune")

    def test_a_card_service_that_stalls_at_the_start_is_told_of_and_leaves_the_window_alive(self):
        service = FakeService(self.home, FAKE_SERVICE).doing("init", "silent")
        with self.start(arguments=("--card-service", service.path)) as pelmora:
            pelmora.find("label", "Connexion au lecteur de cartes…")
            pelmora.press("push button", "Préférences")
            pelmora.find("frame", "Préférences Pelmora")
            os.kill(pelmora.children()[0], signal.SIGKILL)
            pelmora.find("label", GENERAL_ERROR)
            pelmora.find("label", "Insérez une carte, puis appuyez sur Lire\\.")
            pelmora.press("push button", "OK")
            pelmora.wait_until_gone("alert", ".*")
            # The next read binds again, and waits again.
            pelmora.press("push button", "Lire")
            pelmora.find("label", "Connexion au lecteur de cartes…")
            wait(lambda: service.requests("init") == 2)
            self.assertEqual(pelmora.terminate(), 0)

    def test_a_card_service_that_dies_in_the_bind_is_told_of_once_each_time(self):
        for command in ("init", "readers_list"):
            service = FakeService(self.home, FAKE_SERVICE).doing(command, "crash")
            with self.subTest(command), self.start(arguments=("--card-service", service.path)) as pelmora:
                for _ in range(2):
                    pelmora.find("label", GENERAL_ERROR)
                    pelmora.press("push button", "OK")
                    pelmora.wait_until_gone("alert", ".*")
                    pelmora.press("push button", "Lire")
                pelmora.find("label", GENERAL_ERROR)
                self.assertFalse(pelmora.is_enabled("push button", "Voir"))

    def test_a_card_service_that_fails_once_in_the_choice_of_readers_is_used_by_the_next_read(self):
        for name, tell in (("crash", lambda service: service.doing("set_readers", "crash")),
                           ("error", lambda service: service.failing("set_readers"))):
            os.mkdir(self.path(name))
            service = tell(FakeService(self.path(name), FAKE_SERVICE)).only_at_start(1)
            with self.subTest(name), self.start(arguments=("--card-service", service.path)) as pelmora:
                pelmora.find("label", GENERAL_ERROR)
                self.assertFalse(pelmora.is_enabled("push button", "Voir"))
                pelmora.press("push button", "OK")
                pelmora.wait_until_gone("alert", ".*")
                pelmora.press("push button", "Lire")
                pelmora.find("label", "SPECIMEN.*")
                wait(lambda: pelmora.is_enabled("push button", "Voir"))
                self.assertIsNone(pelmora.find_now("alert", ".*"))
                self.assertEqual((service.requests("init"), service.requests("vitale_read")), (2, 1))
        wait(lambda: "The card service ended: signal 9 (SIGKILL)" in self.terminal.text())

    def test_a_card_file_that_goes_is_a_card_that_was_taken_out(self):
        card = self.path("card.xml")
        shutil.copy(os.path.join(STAGE, "share", "pelmora", "specimen.xml"), card)
        with self.start(arguments=(f"--simulate={card}",)) as pelmora:
            read_card(pelmora)
            os.remove(card)
            pelmora.press("push button", "Lire")
            pelmora.find("label", "La carte vitale n'est pas dans le lecteur\\.")
            pelmora.press("push button", "OK")
            pelmora.find("label", SUMMARY)


if __name__ == "__main__":
    unittest.main()
