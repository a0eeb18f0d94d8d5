"""The item in the desktop's status bar, and windows that hide behind it. Usage: test_tray.py STAGE FAKE_SERVICE"""

import os
import re
import subprocess
import sys
import tempfile
import unittest

from bell import Bell
from cardservice import FakeService
from desktop import Application, Opener, wait
from statusitem import StatusBar, property_of
from windows import close, is_hidden, is_iconified, is_in_front, wait_until_shown

STAGE, FAKE_SERVICE = sys.argv.pop(1), sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
TITLE = "Pelmora par MORVEL"
ENTRIES = ["Lecture de la carte Vitale", "Voir l'attestation", "Imprimer l'attestation", "Enregistrer l'attestation",
           None, "Ouvrir le dossier des attestations", None, "Quitter Pelmora"]


class XTray:
    """A system tray of the X11 protocol; a context manager."""

    def __enter__(self):
        self.process = subprocess.Popen(["trayer", "--edge", "top", "--align", "left", "--width", "200", "--height",
                                         "32", "--widthtype", "pixel"], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        wait(lambda: subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "trayer"], check=False,
                                    stdout=subprocess.DEVNULL).returncode == 0)
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()

    @staticmethod
    def has_icon():
        """Whether it has taken in the application's icon: a window of the icons' width."""
        tree = subprocess.run(["xwininfo", "-root", "-tree"], capture_output=True, text=True, check=True).stdout
        return re.search(r'"Pelmora": \(.*\) +22x', tree)


class Tray(unittest.TestCase):
    def close_and_come_back(self, action):
        """Closing hides the window; the action brings it back."""
        close(TITLE)
        wait(lambda: is_hidden(TITLE))
        action()
        wait(lambda: is_in_front(TITLE))

    def test_the_item_has_its_icon_and_its_menu(self):
        with StatusBar() as bar, Application(PELMORA, "--simulate"):
            wait_until_shown(TITLE)
            item = bar.item()
            self.assertTrue(item.value("IconPixmap") or item.value("IconName"))
            self.assertEqual([None if properties.get("type") == "separator" else properties["label"]
                              for _, properties in item.entries()], ENTRIES)
            for _, properties in item.entries():
                self.assertTrue(properties.get("enabled", True))

    def test_the_window_hides_behind_the_item_and_a_click_brings_it_back(self):
        with StatusBar() as bar, Application(PELMORA, "--simulate"):
            wait_until_shown(TITLE)
            self.close_and_come_back(bar.item().click)

    def test_a_later_start_brings_the_hidden_window_back(self):
        with StatusBar() as bar, Application(PELMORA, "--simulate"):
            wait_until_shown(TITLE)
            bar.item()
            self.close_and_come_back(lambda: subprocess.run([PELMORA, "--simulate"], check=True, timeout=10))

    def test_the_menus_last_entry_ends_the_application(self):
        with StatusBar() as bar, Application(PELMORA, "--simulate") as pelmora:
            wait_until_shown(TITLE)
            bar.item().choose("Quitter Pelmora")
            self.assertEqual(pelmora.process.wait(timeout=10), 0)

    def test_a_second_read_beeps_and_the_reader_is_asked_once(self):
        with tempfile.TemporaryDirectory() as folder, StatusBar() as bar:
            service = FakeService(folder, FAKE_SERVICE).doing("vitale_read", "silent")
            with Application(PELMORA, "--card-service", service.path) as pelmora:
                wait(lambda: pelmora.is_enabled("push button", "Voir"))
                item = bar.item()
                bell = Bell()
                self.addCleanup(bell.close)
                item.choose("Lecture de la carte Vitale")
                pelmora.find("label", "Lecture de la carte Vitale\\.\\.\\.")
                self.assertEqual(bell.count(), 0)
                item.choose("Lecture de la carte Vitale")
                wait(lambda: bell.count() == 1)
                pelmora.find("label", ".*\nUne lecture est déjà en cours\\.")
                # Actions that need a card are ignored without a beep.
                item.choose("Voir l'attestation")
                item.choose("Lecture de la carte Vitale")
                wait(lambda: bell.count() == 2)
                self.assertEqual(service.requests("vitale_read"), 1)

    def test_before_the_bind_cards_beep_and_folder_and_end_work(self):
        with tempfile.TemporaryDirectory() as folder, StatusBar() as bar:
            opener = Opener(folder)
            service = FakeService(folder, FAKE_SERVICE).doing("any", "silent")
            with Application(PELMORA, "--card-service", service.path, environment=opener.environment) as pelmora:
                wait_until_shown(TITLE)
                item = bar.item()
                bell = Bell()
                self.addCleanup(bell.close)
                for count, title in enumerate(ENTRIES[:4], start=1):
                    # The window is shown with the reason for the beep, even if it was hidden.
                    close(TITLE)
                    wait(lambda: is_hidden(TITLE))
                    item.choose(title)
                    wait(lambda: bell.count() == count)
                    wait_until_shown(TITLE)
                    pelmora.find("label", ".*\nLe lecteur de cartes n’est pas prêt\\. Appuyez sur Lire\\.")
                item.choose("Ouvrir le dossier des attestations")
                wait(lambda: len(opener.opened()) == 1)
                self.assertTrue(opener.opened()[0].endswith("/Documents/Attestations%20Pelmora"))
                item.choose("Quitter Pelmora")
                self.assertEqual(pelmora.process.wait(timeout=10), 0)
                self.assertEqual(bell.count(), 4)

    def test_each_entry_does_what_it_says(self):
        with StatusBar() as bar, Application(PELMORA, "--simulate") as pelmora:
            wait(lambda: pelmora.is_enabled("push button", "Voir"))
            item = bar.item()
            item.choose("Lecture de la carte Vitale")
            pelmora.find("label", "SPECIMEN Hélène\n.*")
            item.choose("Voir l'attestation")
            pelmora.find("frame", "Hélène SPECIMEN")
            item.choose("Enregistrer l'attestation")
            pelmora.find("label", "L'attestation a bien été enregistrée\\.")
            pelmora.press("push button", "OK")
            pelmora.wait_until_gone("alert", ".*")
            item.choose("Imprimer l'attestation")
            pelmora.find("dialog", "Imprimer.*")

    def test_keys_that_were_left_in_another_window_do_not_count(self):
        with StatusBar() as bar, Application(PELMORA, "--simulate") as pelmora:
            wait(lambda: pelmora.is_enabled("push button", "Voir"))
            item = bar.item()
            wait(lambda: is_in_front(TITLE))
            subprocess.run(["xdotool", "keydown", "ctrl", "keydown", "alt"], check=True)
            with subprocess.Popen(["xmessage", "-name", "autre", "autre"]) as other:
                wait(lambda: not is_in_front(TITLE))
                subprocess.run(["xdotool", "keyup", "alt", "keyup", "ctrl"], check=True)
                item.choose("Lecture de la carte Vitale")
                pelmora.find("label", "SPECIMEN Hélène\n.*")
                other.kill()

    def test_the_setting_shows_and_hides_the_item(self):
        def items():
            return property_of("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                               "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems")

        with tempfile.TemporaryDirectory() as home, StatusBar() as bar:
            os.makedirs(os.path.join(home, "config", "MORVEL"))
            with open(os.path.join(home, "config", "MORVEL", "Pelmora.conf"), "w", encoding="utf-8") as settings:
                settings.write("[General]\nMVStatusItemMenu=false\n")
            with Application(PELMORA, "--simulate", home=home) as pelmora:
                wait(lambda: pelmora.is_enabled("push button", "Voir"))
                self.assertEqual(items(), [])
                pelmora.press("push button", "Préférences")
                pelmora.press("check box", "Afficher le menu Pelmora")
                item = bar.item()
                self.assertEqual(len(item.entries()), len(ENTRIES))
                pelmora.press("check box", "Afficher le menu Pelmora")
                close(TITLE)
                wait(lambda: is_iconified(TITLE))

    def test_it_ends_hidden_too(self):
        with StatusBar() as bar, Application(PELMORA, "--simulate") as pelmora:
            wait_until_shown(TITLE)
            bar.item()
            close(TITLE)
            wait(lambda: is_hidden(TITLE))
            self.assertEqual(pelmora.terminate(), 0)

    def test_without_a_status_bar_closing_iconifies(self):
        with Application(PELMORA, "--simulate") as pelmora:
            wait_until_shown(TITLE)
            close(TITLE)
            wait(lambda: is_iconified(TITLE))
            self.assertIsNone(pelmora.process.poll())

    def test_the_item_appears_when_the_status_bar_starts_later(self):
        with Application(PELMORA, "--simulate"):
            wait_until_shown(TITLE)
            close(TITLE)
            wait(lambda: is_iconified(TITLE))
            with StatusBar() as bar:
                bar.item().click()
                wait(lambda: is_in_front(TITLE))
            # The item also appears in the next status bar, after the first one has ended.
            with StatusBar() as bar:
                self.close_and_come_back(bar.item().click)

    def test_a_hidden_window_comes_back_when_the_status_bar_goes(self):
        with Application(PELMORA, "--simulate"):
            wait_until_shown(TITLE)
            with StatusBar() as bar:
                bar.item()
                close(TITLE)
                wait(lambda: is_hidden(TITLE))
            wait_until_shown(TITLE)

    def test_a_hidden_window_comes_back_when_the_status_bar_has_no_host_any_more(self):
        with StatusBar() as bar, Application(PELMORA, "--simulate"):
            wait_until_shown(TITLE)
            bar.item()
            close(TITLE)
            wait(lambda: is_hidden(TITLE))
            bar.set_host(False)
            wait_until_shown(TITLE)
            close(TITLE)
            wait(lambda: is_iconified(TITLE))

    def test_the_item_shows_in_x11_trays_that_start_later(self):
        with Application(PELMORA, "--simulate"):
            wait_until_shown(TITLE)
            for _ in range(2):
                with XTray() as tray:
                    wait(tray.has_icon)
                    close(TITLE)
                    wait(lambda: is_hidden(TITLE))
                # It comes back when the tray goes.
                wait_until_shown(TITLE)
            close(TITLE)
            wait(lambda: is_iconified(TITLE))


if __name__ == "__main__":
    unittest.main()
