"""The launcher's actions, over the session bus and by the command line. Usage: test_launcher.py STAGE"""

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

from gi.repository import Gio, GLib

from desktop import Application, Opener, wait
from waiting import is_running
from windows import iconify, is_in_front, wait_until_shown

STAGE = sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
NAME = "com.morvel.Pelmora"
TITLE = "Pelmora par MORVEL"
FOLDER = "Documents/Attestations Pelmora"


def ask_bus(operation, arguments=None):
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    return bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", operation, arguments,
                         None, Gio.DBusCallFlags.NONE, 5000)


def process_on_bus():
    """The process with the application's name, or None."""
    try:
        return ask_bus("GetConnectionUnixProcessID", GLib.Variant("(s)", (NAME,))).unpack()[0]
    except GLib.GError:
        return None


def gapplication(*arguments):
    # A launcher whose program is not in the path is ignored.
    environment = {**os.environ, "PATH": os.path.join(STAGE, "bin") + ":" + os.environ["PATH"],
                   "XDG_DATA_DIRS": os.path.join(STAGE, "share") + ":/usr/share"}
    done = subprocess.run(["gapplication", *arguments], capture_output=True, text=True, timeout=30, check=False,
                          env=environment)
    if done.returncode != 0:
        raise AssertionError(done.stderr)
    return done.stdout


class Launcher(unittest.TestCase):
    def setUp(self):
        self.home = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.home)
        self.opener = Opener(self.home)

    def start(self, *arguments):
        pelmora = Application(PELMORA, "--simulate", *arguments, home=self.home, environment=self.opener.environment)
        self.addCleanup(pelmora.__exit__)
        wait_until_shown(TITLE)
        return pelmora

    def opened_folder(self):
        return self.opener.opened() == [GLib.filename_to_uri(os.path.join(self.home, FOLDER))]


class Running(Launcher):
    def test_the_desktop_sees_the_actions(self):
        self.assertEqual(gapplication("list-actions", NAME).split(), ["lire", "imprimer", "dossier"])
        self.start()
        wait(process_on_bus)
        described = subprocess.run(["gdbus", "introspect", "--session", "--dest", NAME, "--object-path",
                                    "/com/morvel/Pelmora"], capture_output=True, text=True, check=True).stdout
        for operation in ("Activate(", "Open(", "ActivateAction("):
            self.assertIn(operation, described)

    def test_each_action_is_done_by_the_running_program(self):
        pelmora = self.start()
        wait(process_on_bus)
        gapplication("action", NAME, "dossier")
        wait(self.opened_folder)
        iconify(TITLE)
        gapplication("action", NAME, "lire")
        pelmora.find("label", ".*SPECIMEN.*")
        wait(lambda: is_in_front(TITLE))
        gapplication("action", NAME, "imprimer")
        pelmora.find("dialog", "Imprimer.*")
        self.assertEqual(process_on_bus(), pelmora.process.pid)

    def test_a_later_start_passes_its_action_on(self):
        pelmora = self.start()
        for name in ("dossier", "lire"):
            done = subprocess.run([PELMORA, "--simulate", "--action", name], capture_output=True, text=True, timeout=10,
                                  check=False, env={**os.environ, "HOME": self.home})
            self.assertEqual((done.returncode, done.stderr), (0, ""))
        wait(self.opened_folder)
        pelmora.find("label", ".*SPECIMEN.*")


class NotRunning(Launcher):
    def test_the_first_start_does_its_action(self):
        self.start("--action=lire").find("label", ".*SPECIMEN.*")

    def test_the_bus_starts_the_program(self):
        services = os.path.join(os.environ["XDG_RUNTIME_DIR"], "dbus-1", "services")
        os.makedirs(services, exist_ok=True)
        service = os.path.join(services, NAME + ".service")
        shutil.copy(os.path.join(STAGE, "share", "dbus-1", "services", NAME + ".service"), service)
        self.addCleanup(ask_bus, "ReloadConfig")
        self.addCleanup(os.remove, service)
        environment = {**self.opener.environment, "HOME": self.home, "QT_QPA_PLATFORM": "xcb",
                       "XDG_CONFIG_HOME": os.path.join(self.home, "config"), "LC_ALL": "C.UTF-8",
                       "DISPLAY": os.environ["DISPLAY"]}
        ask_bus("UpdateActivationEnvironment", GLib.Variant("(a{ss})", (environment,)))
        ask_bus("ReloadConfig")
        for arguments in (["action", NAME, "dossier"], ["launch", NAME]):
            with self.subTest(arguments=arguments):
                self.assertIsNone(process_on_bus())
                gapplication(*arguments)
                process = wait(process_on_bus)
                wait_until_shown(TITLE)
                wait(self.opened_folder)
                os.kill(process, signal.SIGTERM)
                wait(lambda number=process: not is_running(number))


if __name__ == "__main__":
    unittest.main()
