"""A single instance of the application, and its end. Usage: test_instance.py STAGE FAKE_SERVICE SESSION_MANAGER"""

import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from gi.repository import Gio, GLib

from cardservice import FakeService
from desktop import Application, wait
from door import call, open_over_bus
from waiting import is_running
from windows import iconify, is_in_front, shown_windows, wait_until_shown

STAGE, FAKE_SERVICE, SESSION_MANAGER = sys.argv.pop(1), sys.argv.pop(1), sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
TITLE = "Pelmora par MORVEL"
NO_BUS = {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/absent/bus"}


def start_again(*arguments, environment=None, folder=None, seconds=10):
    """A later start: its exit code, its output, and its duration in seconds."""
    start = time.monotonic()
    done = subprocess.run([PELMORA, "--simulate", *arguments], env={**os.environ, **(environment or {})}, cwd=folder,
                          capture_output=True, text=True, timeout=seconds, check=False)
    return done.returncode, done.stderr, time.monotonic() - start


def is_on_bus():
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    return bus.call_sync("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner",
                         GLib.Variant("(s)", ("com.morvel.Pelmora",)), None, Gio.DBusCallFlags.NONE, 5000).unpack()[0]


class Instance(unittest.TestCase):
    def comes_back_by(self, action):
        iconify(TITLE)
        action()
        wait(lambda: is_in_front(TITLE))
        self.assertEqual(len(shown_windows(TITLE)), 1)

    def test_a_later_start_brings_the_window_back(self):
        for environment in ({}, NO_BUS):
            with self.subTest(bus=not environment), Application(PELMORA, "--simulate", environment=environment):
                wait_until_shown(TITLE)

                def start():
                    code, said, seconds = start_again(environment=environment)
                    self.assertEqual((code, said), (0, ""))
                    self.assertLess(seconds, 1)
                self.comes_back_by(start)
                # And from behind another window.
                with subprocess.Popen(["xmessage", "-name", "autre", "autre"]) as other:
                    wait(lambda: not is_in_front(TITLE))
                    start()
                    wait(lambda: is_in_front(TITLE))
                    other.kill()

    def test_after_a_crash_the_next_start_simply_starts(self):
        with Application(PELMORA, "--simulate") as pelmora:
            wait_until_shown(TITLE)
            pelmora.process.kill()
            pelmora.process.wait()
            with Application(PELMORA, "--simulate"):
                wait_until_shown(TITLE)

    def test_of_many_starts_at_once_one_remains(self):
        pelmoras = [Application(PELMORA, "--simulate") for _ in range(5)]
        try:
            wait_until_shown(TITLE)
            wait(lambda: sum(each.process.poll() is None for each in pelmoras) == 1)
            self.assertEqual(sorted(each.process.poll() or 0 for each in pelmoras), [0] * 5)
            self.assertEqual(len(shown_windows(TITLE)), 1)
        finally:
            for each in pelmoras:
                each.__exit__()

    def test_one_that_is_stopped_is_not_waited_for(self):
        with Application(PELMORA, "--simulate") as pelmora:
            wait_until_shown(TITLE)
            pelmora.process.send_signal(signal.SIGSTOP)
            code, said, seconds = start_again()
            self.assertEqual(code, 1)
            self.assertEqual(said, "pelmora : l’application est déjà ouverte, mais elle ne répond pas ; réessayez dans "
                                   "un instant.\n")
            self.assertLess(seconds, 2.5)
            pelmora.process.send_signal(signal.SIGCONT)
            self.assertEqual(start_again()[0], 0)

    def test_a_card_file_is_handed_over(self):
        with tempfile.TemporaryDirectory() as folder, Application(PELMORA, "--simulate") as pelmora:
            card = os.path.join(folder, "carte à lire.xml")
            with open(SPECIMEN, encoding="utf-8") as specimen, open(card, "w", encoding="utf-8") as copy:
                copy.write(specimen.read().replace(">SPECIMEN<", ">AUTRE<"))
            wait_until_shown(TITLE)
            # A relative path is relative to the folder of the later start.
            self.comes_back_by(lambda: self.assertEqual(
                start_again(os.path.basename(card), folder=folder)[:2], (0, "")))
            pelmora.find("label", ".*AUTRE.*")

    def test_a_card_file_whose_name_is_not_utf8_is_shown_and_handed_over(self):
        with tempfile.TemporaryDirectory() as folder:
            cards = []
            for name in ("PREMIER", "SECOND"):
                cards.append(os.path.join(os.fsencode(folder), name.encode() + b"\xe9.xml"))
                with open(SPECIMEN, encoding="utf-8") as specimen, open(cards[-1], "w", encoding="utf-8") as copy:
                    copy.write(specimen.read().replace(">SPECIMEN<", f">{name}<"))
            with Application(PELMORA, "--simulate", cards[0]) as pelmora:
                pelmora.find("label", ".*PREMIER.*")
                self.comes_back_by(lambda: self.assertEqual(
                    start_again(os.path.basename(cards[1]), folder=folder)[:2], (0, "")))
                pelmora.find("label", ".*SECOND.*")

    def test_a_pipe_in_the_place_of_the_settings_holds_nothing_up(self):
        with tempfile.TemporaryDirectory() as home:
            os.makedirs(os.path.join(home, "config", "MORVEL"))
            os.mkfifo(os.path.join(home, "config", "MORVEL", "Pelmora.conf"))
            with Application(PELMORA, "--simulate", home=home) as pelmora:
                wait_until_shown(TITLE)
                pelmora.press("push button", "Lire")
                pelmora.find("label", ".*SPECIMEN.*")

    def test_a_limit_on_the_size_of_files_does_not_end_it(self):
        with Application("prlimit", "--fsize=1000", PELMORA, "--simulate") as pelmora:
            pelmora.press("push button", "Enregistrer")
            pelmora.find("label", "L'attestation a bien été enregistrée.")
            self.assertTrue(is_running(pelmora.process.pid))

    def test_the_desktop_reaches_it_over_the_session_bus(self):
        with Application(PELMORA, "--simulate") as pelmora:
            wait_until_shown(TITLE)
            wait(is_on_bus)
            for name, action in (
                    ("activated", lambda: call("Activate", GLib.Variant("(a{sv})", ({},)))),
                    ("an action", lambda: call("ActivateAction", GLib.Variant("(sava{sv})", ("lire", [], {})))),
                    ("no card", open_over_bus), ("a card", lambda: open_over_bus(SPECIMEN))):
                with self.subTest(name):
                    self.comes_back_by(action)
            pelmora.find("label", ".*SPECIMEN.*")
            pelmora.terminate()
            wait(lambda: not is_on_bus())

    def test_another_card_service_is_another_application(self):
        with Application(PELMORA, "--simulate"), Application(PELMORA, f"--simulate={SPECIMEN}"):
            wait(lambda: len(shown_windows(TITLE)) == 2)


class End(unittest.TestCase):
    def assert_ends(self, pelmora, number):
        self.assert_ends_by(pelmora, lambda: pelmora.process.send_signal(number))

    def assert_ends_by(self, pelmora, action):
        """Within two seconds, with exit code 0, and without a card service left."""
        services = wait(pelmora.children)
        start = time.monotonic()
        action()
        code = pelmora.process.wait(timeout=10)
        self.assertLess(time.monotonic() - start, 2)
        self.assertEqual(code, 0)
        self.assertEqual([service for service in services if is_running(service)], [])

    def test_signals_end_it(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number=number), Application(PELMORA, "--simulate") as pelmora:
                wait_until_shown(TITLE)
                self.assert_ends(pelmora, number)

    def test_the_end_of_the_session_ends_it_and_a_checkpoint_does_not(self):
        with subprocess.Popen([SESSION_MANAGER], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as manager:
            def order(line):
                manager.stdin.write(line + "\n")
                manager.stdin.flush()
            try:
                environment = {"SESSION_MANAGER": manager.stdout.readline().strip()}
                with Application(PELMORA, "--simulate", environment=environment) as pelmora:
                    self.assertEqual(manager.stdout.readline(), "client\n")
                    wait_until_shown(TITLE)
                    order("checkpoint")
                    self.assertEqual(start_again(environment=environment)[0], 0)
                    self.assertIsNone(pelmora.process.poll())
                    self.assert_ends_by(pelmora, lambda: order("end"))
            finally:
                manager.kill()

    def test_a_start_under_nohup_outlives_its_terminal(self):
        with Application("nohup", PELMORA, "--simulate") as pelmora:
            wait_until_shown(TITLE)
            pelmora.process.send_signal(signal.SIGHUP)
            self.assertEqual(start_again()[0], 0)
            self.assertEqual(len(shown_windows(TITLE)), 1)

    def stalling(self, folder, command):
        """A card service that does not answer a command and does not exit when its input ends."""
        return FakeService(folder, FAKE_SERVICE).ignoring_the_end().doing(command, "silent").path

    def test_it_ends_while_the_card_service_stalls(self):
        with tempfile.TemporaryDirectory() as folder:
            with Application(PELMORA, "--card-service", self.stalling(folder, "init")) as pelmora:
                wait_until_shown(TITLE)
                self.assert_ends(pelmora, signal.SIGTERM)

    def test_it_ends_under_a_sheet_while_a_card_is_read(self):
        with tempfile.TemporaryDirectory() as folder:
            with Application(PELMORA, "--card-service", self.stalling(folder, "vitale_read")) as pelmora:
                wait(lambda: pelmora.is_enabled("push button", "Voir"))
                pelmora.press("push button", "Lire")
                pelmora.find("label", "Lecture de la carte Vitale.*")
                self.assert_ends(pelmora, signal.SIGTERM)

    def test_it_ends_under_an_alert(self):
        with Application(PELMORA, "--simulate", "/absent/carte.xml") as pelmora:
            pelmora.find("alert", ".*")
            self.assert_ends(pelmora, signal.SIGTERM)


if __name__ == "__main__":
    unittest.main()
