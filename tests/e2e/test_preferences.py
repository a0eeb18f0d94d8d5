"""The preferences window, pane by pane, in real windows. Usage: test_preferences.py STAGE FAKE_SERVICE"""

import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

from cardservice import FakeService
from desktop import Application, Atspi, key, wait
from windows import close, is_in_front

STAGE, FAKE_SERVICE = sys.argv.pop(1), sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
WINDOW = "Préférences Pelmora"

# Each pane's button, and a control that no other pane has.
PANES = {"Configuration": ("check box", "Afficher le menu Pelmora"),
         "Attestations": ("check box", "Afficher le titre"),
         "Lecture Vitale": ("combo box", ".*"),
         "Mise à jour": ("push button", "Rechercher maintenant")}
MODES = {"Automatique": "Si une librairie de lecture vitale est installé sur le système Pelmora l'utilisera en priorité "
                        "sinon la librarie embarqué sera utilisée.",
         "Installée sur le système": "Pelmora utilise exclusivement la librarie de lecture vitale installé sur le "
                                     "système.",
         "Embarquée avec Pelmora": "Pelmora utilise exclusivement la librarie de lecture vitale embarqué avec "
                                   "l'application."}
EMBEDDED = "Informations sur la librarie embarqué"
INSTALLED = "Informations sur la librarie installé"
CLEARED = "Informations"
FOLDER_PANEL = "Sélectionnez le dossier où seront enrehistrés les attestations vitale"


class Preferences(unittest.TestCase):
    def setUp(self):
        self.home = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.home)
        self.service = FakeService(self.home, FAKE_SERVICE)

    def path(self, *names):
        return os.path.join(self.home, *names)

    def start(self, *arguments, environment=None):
        """The application, bound if it can be, with its preferences open; it ends with the test."""
        pelmora = Application(PELMORA, *arguments, home=self.home, environment=environment)
        self.addCleanup(pelmora.__exit__)
        pelmora.press("push button", "Préférences")
        pelmora.find("frame", WINDOW)
        pelmora.find(*PANES["Configuration"])
        return pelmora

    def setting(self, name):
        """The value in the settings file, or None."""
        try:
            with open(self.path("config", "MORVEL", "Pelmora.conf"), encoding="utf-8") as file:
                lines = dict(line.rstrip("\n").split("=", 1) for line in file if "=" in line)
        except FileNotFoundError:
            return None
        return lines.get(name)

    def pane(self, pelmora, name):
        """Chooses a pane by its button, and waits until it is the only one in the window."""
        pelmora.click("check box", name)
        self.wait_for(pelmora, name)

    def wait_for(self, pelmora, name):
        pelmora.find(*PANES[name])
        wait(lambda: self.present(pelmora) == [name])

    def present(self, pelmora):
        """The panes whose views are in the window, including those below others."""
        return [name for name, control in PANES.items() if pelmora.find_now(*control, showing=False)]

    def shown(self, pelmora):
        return [name for name, control in PANES.items() if pelmora.find_now(*control)]

    def choose_mode(self, pelmora, name):
        """Chooses an entry of the mode menu with the keyboard, in the open list. The label's shortcut focuses it."""
        wait(lambda: is_in_front(WINDOW))
        key("alt+l", "alt+Down", "Home", *["Down"] * list(MODES).index(name), "Return")
        self.wait_for_mode(pelmora, name)

    def wait_for_mode(self, pelmora, name):
        wait(lambda: pelmora.find_now("label", MODES[name].replace(".", "\\.")))

    def versions(self, pelmora):
        """The value of each name in the box of versions."""
        box = wait(lambda: pelmora.find_now("panel", "Informations.*"))
        texts = [box.get_child_at_index(index).get_name() for index in range(box.get_child_count())]
        return dict(zip(texts[::2], texts[1::2]))


class Window(Preferences):
    def test_its_buttons_show_the_panes_and_it_keeps_its_size(self):
        pelmora = self.start("--simulate")
        self.assertEqual(self.shown(pelmora), ["Configuration"])
        box = pelmora.find("frame", WINDOW).get_component_iface().get_extents(Atspi.CoordType.SCREEN)
        self.assertEqual(box.width, 500)
        for name in ("Mise à jour", "Attestations", "Lecture Vitale", "Configuration"):
            with self.subTest(name):
                self.pane(pelmora, name)
                self.assertEqual(self.shown(pelmora), [name])
                after = pelmora.find("frame", WINDOW).get_component_iface().get_extents(Atspi.CoordType.SCREEN)
                self.assertEqual((after.width, after.height), (box.width, box.height))

    def test_two_quick_clicks_leave_the_pane_between_beneath_the_newest(self):
        pelmora = self.start("--simulate")
        places = []
        for name in ("Attestations", "Mise à jour"):
            box = pelmora.find("check box", name).get_component_iface().get_extents(Atspi.CoordType.SCREEN)
            places += ["mousemove", str(box.x + box.width // 2), str(box.y + box.height // 2), "click", "1"]
        subprocess.run(["xdotool", *places], check=True)
        wait(lambda: self.present(pelmora) == ["Attestations", "Mise à jour"])
        self.assertEqual(self.shown(pelmora), ["Mise à jour"])
        # The next change removes this pane. The pane that was the newest stays below.
        pelmora.click("check box", "Configuration")
        wait(lambda: self.present(pelmora) == ["Configuration", "Mise à jour"])
        self.assertEqual(self.shown(pelmora), ["Configuration"])

    def test_there_and_back_within_a_fade_it_ends_with_the_pane_whose_button_is_down(self):
        pelmora = self.start("--simulate")
        wait(lambda: is_in_front(WINDOW))
        key("Right", "Left")
        # A fade has no event at its end: checks for longer than both fades take.
        end = time.monotonic() + 1.5
        wait(lambda: self.shown(pelmora) == ["Configuration"] and self.present(pelmora) != ["Configuration"])
        while time.monotonic() < end:
            self.assertEqual(self.shown(pelmora), ["Configuration"])
        # The pane in between stays below until the next change.
        self.assertEqual(self.present(pelmora), ["Configuration", "Attestations"])
        pelmora.click("check box", "Mise à jour")
        wait(lambda: self.present(pelmora) == ["Configuration", "Mise à jour"])
        self.assertEqual(self.shown(pelmora), ["Mise à jour"])

    def test_closed_and_opened_again_it_is_on_the_same_pane(self):
        pelmora = self.start("--simulate")
        self.pane(pelmora, "Mise à jour")
        for leave in (lambda: key("Escape"), lambda: key("ctrl+w"), lambda: close(WINDOW)):
            wait(lambda: is_in_front(WINDOW))
            leave()
            pelmora.wait_until_gone("frame", WINDOW)
            pelmora.press("push button", "Préférences")
            self.wait_for(pelmora, "Mise à jour")

    def test_assistive_technology_and_the_keyboard_choose_panes(self):
        pelmora = self.start("--simulate")
        wait(lambda: is_in_front(WINDOW))
        key("Right")
        self.wait_for(pelmora, "Attestations")
        key("Right")
        self.wait_for(pelmora, "Lecture Vitale")
        pelmora.press("check box", "Mise à jour")
        self.wait_for(pelmora, "Mise à jour")


class Panes(Preferences):
    def test_the_debug_switch_shows_to_those_who_hold_alt_down(self):
        pelmora = self.start("--simulate")
        self.assertIsNone(pelmora.find_now("check box", "Mode débogage"))
        self.assertEqual(self.setting("MVDebugMode"), "false")
        self.pane(pelmora, "Attestations")
        subprocess.run(["xdotool", "keydown", "alt"], check=True)
        try:
            pelmora.click("check box", "Configuration")
            pelmora.find("check box", "Mode débogage")
        finally:
            subprocess.run(["xdotool", "keyup", "alt"], check=True)
        pelmora.press("check box", "Mode débogage")
        wait(lambda: self.setting("MVDebugMode") == "true")
        self.wait_for(pelmora, "Configuration")
        self.pane(pelmora, "Attestations")
        self.pane(pelmora, "Configuration")
        pelmora.find("check box", "Mode débogage")

        pelmora.__exit__()
        pelmora = self.start("--simulate")
        self.assertIsNone(pelmora.find_now("check box", "Mode débogage"))
        wait(lambda: self.setting("MVDebugMode") == "false")

    def test_check_boxes_are_stored(self):
        pelmora = self.start("--simulate")
        for pane, setting, first in (("Configuration", "MVStatusItemMenu", "false"),
                                     ("Attestations", "MVShowRightLabelPrintOption", "true")):
            with self.subTest(pane):
                if pane != "Configuration":
                    self.pane(pelmora, pane)
                self.assertIsNone(self.setting(setting))
                pelmora.press(*PANES[pane])
                wait(lambda value=first, name=setting: self.setting(name) == value)
                pelmora.press(*PANES[pane])
                wait(lambda value=first, name=setting: self.setting(name) not in (None, value))

    def test_what_a_site_has_locked_is_shown_and_cannot_be_changed(self):
        os.makedirs(self.path("etc", "MORVEL"))
        with open(self.path("etc", "MORVEL", "Pelmora.conf"), "w", encoding="utf-8") as file:
            file.write("MVShowRightLabelPrintOption=true\n[Verrouillé]\nMVStatusItemMenu=false\nMVLVitMode=2\n"
                       "MVAttestationsFolder=~/Été\n")
        pelmora = self.start("--simulate", environment={"XDG_CONFIG_DIRS": self.path("etc")})

        def assert_locked(role, name):
            control = pelmora.find(role, name)
            self.assertFalse(control.get_state_set().contains(Atspi.StateType.ENABLED))
            self.assertEqual(control.get_description(), "Ce réglage est fixé par l’administrateur informatique.")
            return control
        menu = assert_locked(*PANES["Configuration"])
        self.assertFalse(menu.get_state_set().contains(Atspi.StateType.CHECKED))
        self.pane(pelmora, "Attestations")
        assert_locked("push button", "Choisir le dossier des attestations")
        pelmora.find("label", self.path("Été"))
        title = pelmora.find(*PANES["Attestations"])
        self.assertTrue(title.get_state_set().contains(Atspi.StateType.CHECKED))
        pelmora.press(*PANES["Attestations"])
        wait(lambda: self.setting("MVShowRightLabelPrintOption") == "false")
        self.pane(pelmora, "Lecture Vitale")
        assert_locked(*PANES["Lecture Vitale"])
        pelmora.find("label", MODES["Embarquée avec Pelmora"].replace(".", "\\."))
        self.assertIsNone(self.setting("MVLVitMode"))

    def test_the_folder_is_chosen_in_its_panel(self):
        os.makedirs(self.path("Mes attestations 2026"))
        pelmora = self.start("--simulate")
        self.pane(pelmora, "Attestations")
        pelmora.find("label", self.path("Documents/Attestations Pelmora"))
        pelmora.press("push button", "Choisir le dossier des attestations")
        pelmora.find("dialog", FOLDER_PANEL)
        key("Escape")
        pelmora.wait_until_gone("dialog", FOLDER_PANEL)
        self.assertIsNone(self.setting("MVAttestationsFolder"))

        pelmora.press("push button", "Choisir le dossier des attestations")
        pelmora.find("dialog", FOLDER_PANEL)
        pelmora.write_into("text", ".*", self.path("Mes attestations 2026"))
        key("Return")
        pelmora.wait_until_gone("dialog", FOLDER_PANEL)
        pelmora.find("label", self.path("Mes attestations 2026"))
        wait(lambda: self.setting("MVAttestationsFolder") == self.path("Mes attestations 2026"))

    def test_modes_bind_the_real_service_anew_and_its_versions_are_shown(self):
        pelmora = self.start("--simulate")
        self.pane(pelmora, "Lecture Vitale")
        pelmora.find("panel", EMBEDDED)
        shown = self.versions(pelmora)
        self.assertEqual(len(shown), 4)
        self.assertNotIn("Non connu", shown.values())
        for number, name in ((1, "Installée sur le système"), (2, "Embarquée avec Pelmora"), (0, "Automatique")):
            with self.subTest(name):
                self.choose_mode(pelmora, name)
                wait(lambda value=str(number): self.setting("MVLVitMode") == value)
                # Waits until it is bound: another choice would replace the bind.
                pelmora.find("panel", INSTALLED if number == 1 else EMBEDDED)
        self.choose_mode(pelmora, "Embarquée avec Pelmora")
        wait(lambda: self.setting("MVLVitMode") == "2")

        pelmora.__exit__()
        pelmora = self.start("--simulate")
        self.pane(pelmora, "Lecture Vitale")
        pelmora.find("label", MODES["Embarquée avec Pelmora"].replace(".", "\\."))

    def test_a_walk_through_the_closed_menu_binds_once_when_the_keys_have_rested(self):
        pelmora = self.start("--card-service", self.service.path)
        self.pane(pelmora, "Lecture Vitale")
        wait(lambda: is_in_front(WINDOW))
        key("alt+l", "Down", "Down")
        self.wait_for_mode(pelmora, "Embarquée avec Pelmora")
        wait(lambda: self.service.requested("Mode") == ["0", "2"])
        wait(lambda: self.setting("MVLVitMode") == "2")
        # Tab leaves the menu, so the choice takes effect at once.
        key("Up", "Up", "Tab")
        self.wait_for_mode(pelmora, "Automatique")
        wait(lambda: self.setting("MVLVitMode") == "0")
        pelmora.find("panel", EMBEDDED)
        self.assertEqual(self.service.requested("Mode"), ["0", "2", "0"])
        self.assertIsNone(pelmora.find_now("alert", ".*"))

    def test_the_wheel_does_not_change_the_mode(self):
        pelmora = self.start("--card-service", self.service.path)
        self.pane(pelmora, "Lecture Vitale")
        wait(lambda: is_in_front(WINDOW))
        key("alt+l")
        pelmora.turn_wheel("combo box", ".*", 2)
        pelmora.turn_wheel("combo box", ".*", -1)
        # A key after the wheel shows which entry the wheel has left selected.
        key("Down", "Return")
        self.wait_for_mode(pelmora, "Installée sur le système")
        wait(lambda: self.setting("MVLVitMode") == "1")
        self.assertEqual(self.service.requested("Mode"), ["0", "1"])

    def test_a_bind_that_a_newer_one_replaces_is_no_failure(self):
        for replace in (lambda pelmora: self.choose_mode(pelmora, "Embarquée avec Pelmora"),
                        lambda pelmora: pelmora.press("push button", "Lire")):
            # The first start of the service is the application's, the second one is that of the first choice.
            pelmora = self.start("--card-service", self.service.doing("init", "silent").only_at_start(2).path)
            self.pane(pelmora, "Lecture Vitale")
            pelmora.find("panel", EMBEDDED)
            self.choose_mode(pelmora, "Installée sur le système")
            wait(lambda: len(self.service.requested("Mode")) == 2)
            replace(pelmora)
            pelmora.find("panel", EMBEDDED)
            if "vitale_read" in self.service.requested("Command"):
                pelmora.find("label", "SPECIMEN.*")
            wait(lambda shown=pelmora: shown.is_enabled("push button", "Voir"))
            self.assertIsNone(pelmora.find_now("alert", ".*"))
            self.assertEqual(len(self.service.requested("Mode")), 3)
            pelmora.__exit__()
            self.service.forget()

    def test_a_mode_that_the_service_refuses_is_told_and_kept(self):
        pelmora = self.start("--card-service", self.service.readers().path)
        pelmora.press("push button", "OK")
        pelmora.wait_until_gone("alert", ".*")
        self.pane(pelmora, "Lecture Vitale")
        self.choose_mode(pelmora, "Installée sur le système")
        pelmora.find("label", r"Aucun lecteur de carte n'a été trouvé\. Vérifiez les branchements\.")
        wait(lambda: self.setting("MVLVitMode") == "1")
        self.assertEqual(self.service.requested("Mode")[-1], "1")
        self.assertFalse(pelmora.is_enabled("push button", "Voir"))

    def test_a_service_without_versions_leaves_them_unknown(self):
        pelmora = self.start("--card-service", self.service.failing("informations").path)
        self.pane(pelmora, "Lecture Vitale")
        wait(lambda: "informations" in self.service.requested("Command"))
        pelmora.find("panel", CLEARED)
        self.assertEqual(set(self.versions(pelmora).values()), {"Non connu"})

    def test_a_version_that_the_service_does_not_know_is_unknown_alone(self):
        document = "<informations><apiLecVitale><version>7.10</version></apiLecVitale></informations>"
        self.service.text("informations", "Informations", document).text("init", "Embedded", "false")
        pelmora = self.start("--card-service", self.service.path)
        self.pane(pelmora, "Lecture Vitale")
        pelmora.find("panel", INSTALLED)
        self.assertEqual(list(self.versions(pelmora).values()), ["7.10"] + ["Non connu"] * 3)

    def test_odd_modes_in_the_settings_file_are_the_automatic_one(self):
        os.makedirs(self.path("config", "MORVEL"))
        for value in ("7", "Auto", "garbage", "-1"):
            with self.subTest(value):
                with open(self.path("config", "MORVEL", "Pelmora.conf"), "w", encoding="utf-8") as file:
                    file.write(f"[General]\nMVLVitMode={value}\n")
                pelmora = self.start("--card-service", self.service.path)
                self.pane(pelmora, "Lecture Vitale")
                pelmora.find("label", MODES["Automatique"].replace(".", "\\."))
                self.assertEqual(self.service.requested("Mode"), ["0"])
                self.assertEqual(self.setting("MVLVitMode"), value)
                pelmora.__exit__()
                self.service.forget()

    def test_the_last_check_for_updates_is_shown(self):
        os.makedirs(self.path("config", "MORVEL"))
        with open(self.path("config", "MORVEL", "Pelmora.conf"), "w", encoding="utf-8") as file:
            file.write('[General]\nSULastCheckTime="@DateTime(\\0\\0\\0\\x10\\0\\0\\0\\0\\0\\0%\\x85\\xb1\\x1'
                       'f\\x4\\xf0\\x8\\0)"\n')
        pelmora = self.start("--simulate")
        self.pane(pelmora, "Mise à jour")
        pelmora.find("label", r"Dernière recherche le \d\d/\d\d/\d{4} à \d\d:\d\d")

    def test_without_a_feed_no_check_can_be_asked_for_and_no_date_is_shown(self):
        pelmora = self.start("--simulate")
        self.pane(pelmora, "Mise à jour")
        self.assertIsNone(pelmora.find_now("label", "Dernière recherche.*"))
        self.assertFalse(pelmora.is_enabled("push button", "Rechercher maintenant"))
        self.assertFalse(pelmora.is_enabled("menu item", "Rechercher les mises à jour…", showing=False))


if __name__ == "__main__":
    unittest.main()
