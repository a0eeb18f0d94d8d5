"""The application's windows from start to end. Usage: test_application.py STAGE FAKE_SERVICE"""

import collections
import os
import shutil
import signal
import sys
import tempfile
import unittest
from urllib.parse import unquote

from bell import Bell
from cardservice import FakeService
from desktop import Application, Atspi, GLib, Opener, key, wait, walk
from specimencard import FILE, SUMMARY, read_card
from waiting import is_running
from windows import close, is_iconified, is_in_front

STAGE, FAKE_SERVICE = sys.argv.pop(1), sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
TITLE = "Pelmora par MORVEL"
READING = r"Lecture de la carte Vitale\.\.\."
TILES = ("Lire", "Voir", "Imprimer", "Enregistrer", "Quitter", "Suggestion", "Préférences")


class Desk(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.opener = Opener(self.folder)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def start(self, *arguments):
        """The application with its window up; it ends with the test."""
        pelmora = Application(PELMORA, *arguments, environment=self.opener.environment)
        self.addCleanup(pelmora.__exit__)
        pelmora.find("frame", TITLE)
        return pelmora

    def start_bound(self, *arguments):
        pelmora = self.start(*arguments)
        wait(lambda: pelmora.is_enabled("push button", "Voir"))
        return pelmora

    def service(self):
        return FakeService(self.folder, FAKE_SERVICE)

    def tiles(self, pelmora):
        return {name: pelmora.is_enabled("push button", name) for name in TILES}

    def attestations(self, pelmora):
        return os.path.join(pelmora.home, "Documents", "Attestations Pelmora")

    def save(self, pelmora):
        pelmora.press("push button", "Enregistrer")
        pelmora.find("alert", "Enregistrement de l'attestation")
        pelmora.find("label", r"L'attestation a bien été enregistrée\.")
        pelmora.press("push button", "OK")
        pelmora.wait_until_gone("alert", ".*")


class Start(Desk):
    def test_until_the_service_is_bound_cards_can_only_be_read(self):
        pelmora = self.start("--card-service", self.service().doing("any", "silent").path)
        pelmora.find("label", "Aucune")
        off = {"Voir", "Imprimer", "Enregistrer", "Quitter"}
        self.assertEqual(self.tiles(pelmora), {name: name not in off for name in TILES})

    def test_once_it_is_bound_everything_is_on(self):
        pelmora = self.start_bound("--simulate")
        self.assertEqual(self.tiles(pelmora), {name: True for name in TILES})

    def test_without_a_reader_an_alert_says_so_and_a_read_says_it_again(self):
        pelmora = self.start()
        text = r"Aucun lecteur de carte n'a été trouvé\. Vérifiez les branchements\."
        pelmora.find("label", text)
        pelmora.press("push button", "Aide")
        wait(lambda: len(self.opener.opened()) == 1)
        self.assertRegex(self.opener.opened()[0], "/Help.html#erreur-20$")
        pelmora.press("push button", "OK")
        pelmora.wait_until_gone("label", text)
        pelmora.press("push button", "Lire")
        pelmora.find("label", text)

    def test_a_card_file_that_is_named_is_there_at_once(self):
        pelmora = self.start(SPECIMEN)
        pelmora.find("label", SUMMARY)

    def test_no_card_service_is_left_when_the_application_dies(self):
        pelmora = self.start_bound("--simulate")
        services = pelmora.children()
        self.assertEqual(len(services), 1)
        pelmora.process.kill()
        wait(lambda: not is_running(services[0]))


class Reading(Desk):
    def test_a_card_is_read_looked_at_and_saved(self):
        pelmora = self.start_bound("--simulate")
        read_card(pelmora)
        pelmora.press("push button", "Voir")
        pelmora.find("frame", "Hélène SPECIMEN")
        pelmora.find("label", "Nom de l'assuré : SPECIMEN Hélène")
        self.save(pelmora)
        self.save(pelmora)
        self.assertEqual(os.listdir(self.attestations(pelmora)), [FILE])
        wait(lambda: pelmora.entries("Recents") == [FILE, "", "Effacer le menu"])

    def test_the_window_with_the_attestation_follows_each_read(self):
        card = self.path("carte.xml")
        shutil.copy(SPECIMEN, card)
        pelmora = self.start_bound(f"--simulate={card}")
        read_card(pelmora)
        pelmora.press("push button", "Voir")
        pelmora.find("frame", "Hélène SPECIMEN")
        with open(SPECIMEN, encoding="utf-8") as file, open(card, "w", encoding="utf-8") as other:
            other.write(file.read().replace("Hélène", "Zoé"))
        pelmora.press("push button", "Lire")
        pelmora.find("label", SUMMARY.replace("Hélène", "Zoé"))
        pelmora.find("frame", "Zoé SPECIMEN")
        pelmora.find("label", "Nom de l'assuré : SPECIMEN Zoé")
        self.assertIsNone(pelmora.find_now("frame", "Hélène SPECIMEN"))

    def test_viewing_without_a_card_reads_it_first(self):
        pelmora = self.start_bound("--simulate")
        pelmora.press("push button", "Voir")
        pelmora.find("frame", "Hélène SPECIMEN")
        pelmora.find("label", SUMMARY)

    def test_while_a_card_is_read_a_sheet_says_so(self):
        service = self.service().doing("vitale_read", "silent")
        pelmora = self.start_bound("--card-service", service.path)
        pelmora.click("push button", "Lire")
        pelmora.find("label", READING)
        pelmora.click("push button", "Lire")
        key("ctrl+l")
        pelmora.find("label", ".*tarde.*")
        self.assertEqual(service.requests("vitale_read"), 1)

    def test_a_second_press_while_the_first_waits_for_the_service_only_beeps(self):
        service = self.service().doing("init", "silent")
        pelmora = self.start("--card-service", service.path)
        bell = Bell()
        self.addCleanup(bell.close)
        pelmora.click("push button", "Lire")
        pelmora.click("push button", "Lire")
        wait(lambda: bell.count() == 1)
        self.assertEqual(service.requests("init"), 1)

    def test_a_read_that_another_action_needs_has_its_own_message(self):
        pelmora = self.start_bound("--card-service", self.service().doing("vitale_read", "silent").path)
        pelmora.press("push button", "Enregistrer")
        pelmora.find("label", "Lecture de la carte vitale en cours…")

    def test_a_read_that_takes_long_can_be_cancelled_and_the_next_one_has_a_new_service(self):
        pelmora = self.start_bound("--simulate")
        # A stopped service does not answer, like one with a hanging reader, and answers late when it continues.
        service = pelmora.children()[0]
        os.kill(service, signal.SIGSTOP)
        pelmora.press("push button", "Lire")
        pelmora.find("label", READING)
        self.assertIsNone(pelmora.find_now("push button", "Annuler"))
        pelmora.press("push button", "Annuler")
        pelmora.wait_until_gone("label", READING)
        os.kill(service, signal.SIGCONT)
        pelmora.find("label", r"Lecture annulée à \d\d:\d\d")
        wait(lambda: not is_running(service))
        pelmora.find("label", "Aucune")
        pelmora.find("label", r"Lecture annulée à \d\d:\d\d")
        self.assertIsNone(pelmora.find_now("alert", ".*"))

        read_card(pelmora)
        pelmora.find("label", "Lue le .*")
        self.assertEqual(len(pelmora.children()), 1)
        self.assertNotIn(service, pelmora.children())

    def test_escape_cancels_a_long_read_that_another_action_needs_and_a_service_that_hangs_is_killed(self):
        pelmora = self.start_bound("--simulate")
        service = pelmora.children()[0]
        os.kill(service, signal.SIGSTOP)
        pelmora.press("push button", "Enregistrer")
        pelmora.find("push button", "Annuler")
        key("Escape")
        pelmora.find("label", r"Lecture annulée à \d\d:\d\d")
        # The next action does not wait for the end of the service that hangs.
        pelmora.press("push button", "Voir")
        pelmora.find("frame", "Hélène SPECIMEN")
        wait(lambda: not is_running(service))
        self.assertIsNone(pelmora.find_now("alert", ".*"))
        self.assertFalse(os.path.exists(os.path.join(self.attestations(pelmora), FILE)))

    def test_a_service_that_keeps_silent_is_told_of_and_the_application_can_be_left(self):
        pelmora = self.start_bound("--card-service", self.service().doing("vitale_read", "silent").path)
        pelmora.press("push button", "Lire")
        pelmora.find("label", READING)
        pelmora.find("label", ".*tarde.*")
        key("ctrl+q")
        self.assertEqual(pelmora.process.wait(timeout=5), 0)

    def test_a_service_that_dies_in_the_middle_is_an_error_and_the_next_read_goes_well(self):
        pelmora = self.start_bound("--simulate")
        # A stopped service does not answer: it dies before the end of the read.
        service = pelmora.children()[0]
        os.kill(service, signal.SIGSTOP)
        pelmora.press("push button", "Lire")
        pelmora.find("label", READING)
        os.kill(service, signal.SIGKILL)
        pelmora.find("label", r"L’opération n’a pas pu s’achever\. \(erreur Pelmora -10\.\)")
        pelmora.press("push button", "OK")
        pelmora.wait_until_gone("alert", ".*")
        read_card(pelmora)

    def test_a_card_that_is_gone_is_an_error_and_the_last_one_stays(self):
        card = self.path("carte.xml")
        shutil.copy(SPECIMEN, card)
        pelmora = self.start_bound(f"--simulate={card}")
        read_card(pelmora)
        os.remove(card)
        pelmora.press("push button", "Lire")
        pelmora.find("label", r"La carte vitale n'est pas dans le lecteur\.")
        pelmora.press("push button", "OK")
        pelmora.find("label", SUMMARY)

    def test_with_two_keys_held_down_reading_is_from_a_file(self):
        pelmora = self.start_bound("--simulate")
        pelmora.click("push button", "Lire", "alt")
        pelmora.find("label", SUMMARY)
        pelmora.click("push button", "Lire", "ctrl", "alt")
        pelmora.find("dialog", "Sélectionnez un fichier XML")

    def test_a_card_file_is_chosen_in_the_panel(self):
        service = self.service()
        pelmora = self.start_bound("--card-service", service.path)
        pelmora.choose("Ouvrir un fichier de carte…")
        pelmora.find("dialog", "Sélectionnez un fichier XML")
        pelmora.write_into("text", "Nom de fichier :", SPECIMEN)
        key("Return")
        pelmora.find("label", SUMMARY)
        pelmora.press("push button", "Voir")
        pelmora.find("label", "Non spécifié")
        self.assertEqual(service.requests("vitale_read"), 0)


class Files(Desk):
    def test_recent_files_and_their_folder_are_opened_by_the_desktop(self):
        pelmora = self.start_bound("--simulate")
        self.assertEqual(pelmora.entries("Recents"), ["Effacer le menu"])
        self.assertFalse(pelmora.is_enabled("menu item", "Effacer le menu", showing=False))
        read_card(pelmora)
        self.save(pelmora)
        pelmora.choose(FILE)
        wait(lambda: len(self.opener.opened()) == 1)
        pelmora.choose("Ouvrir le dossier des attestations")
        wait(lambda: len(self.opener.opened()) == 2)
        folder = self.attestations(pelmora)
        opened = [address.replace("%20", " ").replace("%C3%A9", "é").replace("%C3%A8", "è")
                  for address in self.opener.opened()]
        self.assertEqual(opened, [f"file://{folder}/{FILE}", f"file://{folder}"])

        pelmora.choose("Effacer le menu")
        wait(lambda: pelmora.entries("Recents") == ["Effacer le menu"])
        self.assertEqual(os.listdir(folder), [FILE])

    def test_the_saved_file_is_a_link_for_the_keyboard_and_its_menu_opens_the_folder(self):
        pelmora = self.start_bound("--simulate")
        read_card(pelmora)
        self.save(pelmora)
        pelmora.find("label", rf"Lue le .*\nEnregistrée\u00a0: {FILE}")
        link = pelmora.find("push button", f"Ouvrir {FILE}")
        wait(lambda: is_in_front(TITLE))
        Atspi.Component.grab_focus(link)
        key("Return")
        wait(lambda: len(self.opener.opened()) == 1)
        key("Menu", "d")
        wait(lambda: len(self.opener.opened()) == 2)
        folder = self.attestations(pelmora)
        self.assertEqual([unquote(address) for address in self.opener.opened()],
                         [f"file://{folder}/{FILE}", f"file://{folder}"])
        pelmora.press("push button", "Voir")
        pelmora.wait_until_gone("push button", f"Ouvrir {FILE}")

    def test_mail_and_help_go_to_the_desktop(self):
        pelmora = self.start_bound("--simulate")
        pelmora.press("push button", "Suggestion")
        wait(lambda: len(self.opener.opened()) == 1)
        key("F1")
        wait(lambda: len(self.opener.opened()) == 2)
        mail, page = self.opener.opened()
        self.assertRegex(mail, r"^mailto:[^@?]+@[^@?]+\?subject=Suggestion%20pour%20le%20logiciel%20PELMORA$")
        self.assertEqual(page, f"file://{os.path.realpath(STAGE)}/share/pelmora/Help.html")


    def test_the_diagnosis_is_shown_from_menu_and_preferences(self):
        pelmora = self.start_bound("--simulate")
        for ask in (lambda: pelmora.choose("Diagnostic…"), lambda: self.press_in_preferences(pelmora)):
            ask()
            wait(lambda: "Conclusion" in pelmora.text_of("text", "Diagnostic"))
            pelmora.press("push button", "Copier")
            pelmora.find("label", "Diagnostic copié\\.")
            pelmora.press("push button", "Fermer")
            pelmora.wait_until_gone("dialog", "Diagnostic de la lecture")

    def press_in_preferences(self, pelmora):
        pelmora.press("push button", "Préférences")
        pelmora.click("check box", "Lecture Vitale")
        pelmora.press("push button", "Diagnostic…")


class Names(Desk):
    ROLES = {"push button", "check box", "combo box", "spin button", "text", "link", "menu item"}

    def names_in(self, pelmora, role, title):
        try:
            return collections.Counter(
                node.get_name() for node in walk(pelmora.find(role, title))
                if node.get_role_name() in self.ROLES and node.get_state_set().contains(Atspi.StateType.SHOWING))
        except GLib.GError:
            return None  # A control has just disappeared.

    def assert_own_names(self, pelmora, role, title):
        """Each control of the window has a name that no other control has: screen readers identify it by this name."""
        names = wait(lambda: self.names_in(pelmora, role, title))
        self.assertEqual([name for name, count in names.items() if count > 1 or not name], [])

    def test_the_controls_of_a_window_have_names_of_their_own(self):
        pelmora = self.start_bound("--simulate")
        read_card(pelmora)
        self.save(pelmora)
        self.assert_own_names(pelmora, "frame", TITLE)
        pelmora.press("push button", "Voir")
        self.assert_own_names(pelmora, "frame", "Hélène SPECIMEN")
        pelmora.press("push button", "Préférences")
        for pane, control in (("Configuration", "Afficher le menu Pelmora"), ("Attestations", "Afficher le titre"),
                              ("Lecture Vitale", "Lire dès qu’une carte est insérée")):
            pelmora.press("check box", pane)
            pelmora.find("check box", control)
            self.assert_own_names(pelmora, "frame", "Préférences Pelmora")
        for entry, role, title in (("Diagnostic…", "dialog", "Diagnostic de la lecture"),
                                   ("À propos de Pelmora", "alert", "À propos de Pelmora"),
                                   ("Imprimer…", "dialog", "Imprimer l’attestation – SPECIMEN Hélène")):
            pelmora.choose(entry)
            self.assert_own_names(pelmora, role, title)
            wait(lambda: is_in_front(title))
            key("Escape")
            pelmora.wait_until_gone(role, title)


class End(Desk):
    def test_closing_the_window_where_no_tray_answers_iconifies_it(self):
        pelmora = self.start_bound("--simulate")
        close(TITLE)
        wait(lambda: is_iconified(TITLE))
        self.assertIsNone(pelmora.process.poll())

    def test_the_application_is_left_by_tile_menu_and_key(self):
        leave = {"tile": lambda pelmora: pelmora.press("push button", "Quitter"),
                 "menu": lambda pelmora: pelmora.choose("Quitter Pelmora"),
                 "key": lambda _: key("ctrl+q")}
        for name, action in leave.items():
            with self.subTest(name):
                pelmora = self.start_bound("--simulate")
                services = pelmora.children()
                action(pelmora)
                self.assertEqual(pelmora.process.wait(timeout=5), 0)
                self.assertEqual([is_running(service) for service in services], [False])

    def test_preferences_open_from_their_tile(self):
        pelmora = self.start_bound("--simulate")
        pelmora.press("push button", "Préférences")
        pelmora.find("frame", "Préférences Pelmora")
        pelmora.find("check box", "Afficher le menu Pelmora")


if __name__ == "__main__":
    unittest.main()
