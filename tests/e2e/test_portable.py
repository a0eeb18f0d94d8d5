"""The portable copy, which offers to move to the Applications folder. Usage: test_portable.py STAGE MOVABLE_PROGRAM, in a
mount namespace of its own

Most tests run a program that does nothing else; the last ones run the whole application."""

import os
import re
import subprocess
import unittest

from desktop import Application, processes_of, wait
from portable import (BODY, BOX, DOWNLOADS_NOTE, HOME_TITLE, INFO, MOVE, PortableTest, STAY, make_bundle,
                      program_of, unpack)


class Portable(PortableTest):
    def test_declining_asks_again_and_the_box_does_not(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.find("label", HOME_TITLE.replace("?", r"\?"))
            pelmora.find("label", f"{BODY} {DOWNLOADS_NOTE}")
            pelmora.press("push button", STAY)
            pelmora.find("label", program_of(bundle))
        self.assertEqual(self.stored(), "")
        with self.start(bundle) as pelmora:
            pelmora.press("check box", BOX)
            pelmora.press("push button", STAY)
            pelmora.find("label", program_of(bundle))
        self.assertIn("moveToApplicationsFolderAlertSuppress=true\n", self.stored())
        with self.start(bundle) as pelmora:
            pelmora.find("label", program_of(bundle))
        self.assertFalse(os.path.exists(self.destination))

    def test_escape_declines(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            alert = pelmora.find("push button", MOVE)
            wait(lambda: "focused" in [state.value_nick for state in alert.get_state_set().get_states()])
            subprocess.run(["xdotool", "key", "Escape"], check=True)
            pelmora.find("label", program_of(bundle))

    def test_the_question_is_french_in_any_language(self):
        for language in ("fr_FR:en", "de_DE"):
            with self.subTest(language):
                bundle = make_bundle(os.path.join(self.home, language, "Pelmora.app"))
                with self.start(bundle, LANGUAGE=language) as pelmora:
                    pelmora.find("label", re.escape(HOME_TITLE))
                    pelmora.find("label", BODY)
                    pelmora.find("check box", BOX)
                    pelmora.find("push button", MOVE)
                    pelmora.press("push button", STAY)
                    pelmora.find("label", program_of(bundle))

    def test_accepting_moves_and_starts_again_with_what_was_asked_for(self):
        bundle = make_bundle(os.path.join(self.downloads, "L'été \"2\" $HOME", "Pelmora.app"))
        with self.start(bundle, "--simulate", "l'été.xml") as pelmora:
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        self.assertFalse(os.path.exists(bundle))
        self.assertFalse(os.path.exists(self.trash))
        self.assertEqual(self.logged(), [(INFO, "INFO -- Moving myself to the Applications folder")])
        with self.running(self.destination) as moved:
            moved.find("label", "\n".join([program_of(self.destination), "--simulate", "l'été.xml"]))

    def test_the_next_start_does_not_wait_for_the_launcher_to_ask(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            with self.running(self.destination) as moved:
                moved.find("label", program_of(self.destination))
            self.assertEqual(pelmora.process.wait(timeout=20), 0)

    def test_a_copy_that_is_started_from_inside_itself_moves(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with Application("sh", "-c", 'cd "$1" && exec ./pelmora carte.xml', "sh", os.path.join(bundle, "bin"),
                         home=self.home, environment=self.environment) as pelmora:
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        self.assertEqual(os.listdir(self.downloads), [])
        with self.running(self.destination) as moved:
            moved.find("label", "\n".join([program_of(self.destination), "carte.xml"]))

    def test_a_file_system_without_locks_keeps_nobody_from_starting(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        # Like a network file system. With -D the tracer is not the program's parent. Leaks cannot be detected under it.
        with Application("strace", "-D", "-o", "/dev/null", "-e", "inject=flock:error=EBADF",
                         os.path.join(bundle, "bin", "pelmora"), home=self.home,
                         environment={**self.environment, "ASAN_OPTIONS": "detect_leaks=0"}) as pelmora:
            pelmora.press("push button", STAY)
            pelmora.find("label", program_of(bundle))

    def test_an_old_copy_goes_to_the_trash(self):
        make_bundle(self.destination)
        with open(os.path.join(self.destination, "ancien"), "w", encoding="utf-8"):
            pass
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        self.assertFalse(os.path.exists(bundle))
        self.assertTrue(os.path.exists(os.path.join(self.trash, "Pelmora.app", "ancien")))
        with self.running(self.destination) as moved:
            moved.find("label", program_of(self.destination))
        self.assertFalse(os.path.exists(os.path.join(self.destination, "ancien")))

    def test_a_running_copy_is_switched_to(self):
        make_bundle(self.destination)
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(self.destination) as first:
            first.find("label", program_of(self.destination))
            with self.start(bundle) as pelmora:
                pelmora.press("push button", MOVE)
                self.assertEqual(pelmora.process.wait(timeout=20), 0)
            self.assertEqual(self.logged(), [(INFO, "INFO -- Moving myself to the Applications folder"),
                                             (INFO, "INFO -- Switching to an already running version")])
            # The small program does not detect a running instance: opening it starts another process.
            wait(lambda: len(processes_of(program_of(self.destination))) == 2)
        self.assertTrue(os.path.exists(bundle))

    def test_a_copy_that_runs_already_is_not_asked_again(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as first:
            first.find("push button", STAY)
            with self.start(bundle) as second:
                self.assertEqual(second.process.wait(timeout=20), 0)
            first.press("push button", STAY)
            first.find("label", program_of(bundle))
            with self.start(bundle) as third:
                third.find("label", program_of(bundle))

    def test_the_whole_application_starts_where_it_is(self):
        bundle = unpack(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle, "--simulate") as pelmora:
            pelmora.press("push button", STAY)
            pelmora.find("push button", "Lire")
        self.assertFalse(os.path.exists(self.destination))

    def test_a_moved_copy_is_in_the_menus_until_its_launcher_is_removed(self):
        launcher = os.path.join(self.home, "data", "applications", "com.morvel.Pelmora.desktop")
        bundle = unpack(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle, "--simulate") as pelmora:
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        with self.running(self.destination) as moved:
            moved.find("push button", "Lire")
        done = subprocess.run(["desktop-file-validate", launcher], capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stdout), (0, ""))

        # What the launcher starts is the copy's program.
        environment = {**os.environ, **self.environment, "HOME": self.home, "QT_QPA_PLATFORM": "xcb",
                       "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
        subprocess.run(["gio", "launch", launcher], env=environment, check=True, timeout=20)
        with self.running(self.destination) as launched:
            launched.find("push button", "Lire")

        def remove():
            return subprocess.run([os.path.join(self.destination, "bin", "pelmora"), "--remove-launcher"],
                                  env=environment, capture_output=True, text=True, check=False)
        self.assertEqual((remove().returncode, os.path.exists(launcher)), (0, False))
        self.assertEqual((remove().returncode, remove().stderr), (1, "pelmora : cette copie n’a pas de lanceur.\n"))

    def test_the_whole_application_moves_with_its_settings_and_is_switched_to(self):
        os.makedirs(os.path.dirname(self.settings))
        with open(self.settings, "w", encoding="utf-8") as file:
            file.write(f"[General]\nMVAttestationsFolder={self.home}/Attestations\nMVLVitMode=2\n")
        bundle = unpack(os.path.join(self.downloads, "Pelmora.app"))
        program = program_of(self.destination)
        with self.start(bundle, "--simulate") as pelmora:
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        self.assertFalse(os.path.exists(bundle))
        with self.running(self.destination) as moved:
            moved.find("push button", "Lire")
            self.assertIn(f"MVAttestationsFolder={self.home}/Attestations\n", self.stored())
            self.assertIn("MVLVitMode=2\n", self.stored())
            self.logged()

            bundle = unpack(os.path.join(self.downloads, "Pelmora.app"))
            with self.start(bundle, "--simulate") as again:
                again.press("push button", MOVE)
                self.assertEqual(again.process.wait(timeout=20), 0)
            self.assertEqual(self.logged(), [(INFO, "INFO -- Moving myself to the Applications folder"),
                                             (INFO, "INFO -- Switching to an already running version")])
            # The opened copy has passed its request to the running one.
            wait(lambda: len(processes_of(program)) == 1)
            self.assertEqual(processes_of(program), [moved.process.pid])
        self.assertTrue(os.path.exists(bundle))


if __name__ == "__main__":
    unittest.main()
