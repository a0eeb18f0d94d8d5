"""The portable copy, which offers to move to the Applications folder. Usage: test_portable.py STAGE MOVABLE_PROGRAM, in a
mount namespace of its own

Most tests run a program that does nothing else; the last ones run the whole application."""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

from desktop import Application, is_running, wait
from systemlog import SystemLog, mount

MOVABLE_PROGRAM = sys.argv.pop(2)
STAGE = sys.argv.pop(1)

HOME_TITLE = "Move to Applications folder in your Home folder?"
BODY = "I can move myself to the Applications folder if you'd like."
DOWNLOADS_NOTE = "This will keep your Downloads folder uncluttered."
PASSWORD_NOTE = "Note that this will require an administrator password."
MOVE = "Move to Applications Folder"
STAY = "Do Not Move"
# Of the system log: the user's programs, and each line's weight.
INFO, WARNING, ERROR = 8 + 6, 8 + 4, 8 + 3
BOX = "Do not show this message again"


def make_bundle(path, program=MOVABLE_PROGRAM):
    """A portable copy at the path: the small program among the texts, or the whole tree."""
    os.makedirs(os.path.join(path, "bin"))
    shutil.copy(program, os.path.join(path, "bin", "pelmora"))
    shutil.copytree(os.path.join(STAGE, "share", "pelmora", "fr.lproj"),
                    os.path.join(path, "share", "pelmora", "fr.lproj"))
    return path


def unpack(path):
    """A portable copy of the whole tree, through the form that it is delivered in."""
    folder, name = os.path.split(path)
    os.makedirs(folder, exist_ok=True)
    archive = os.path.join(folder, "portable.tar.zst")
    subprocess.run(["tar", "--create", "--use-compress-program", "zstd -1", "--file", archive, "--directory", STAGE,
                    "--transform", f"s,^[.],{name},S", "."], check=True)
    subprocess.run(["tar", "--extract", "--file", archive, "--directory", folder], check=True)
    os.remove(archive)
    return path


def processes_of(path):
    """Numbers of the processes that run a program at the path."""
    found = []
    for name in os.listdir("/proc"):
        try:
            if name.isdigit() and os.readlink(f"/proc/{name}/exe") == path and is_running(int(name)):
                found.append(int(name))
        except OSError:
            pass
    return found


class Running(Application):
    """A process that runs already, started by another one, at the path of its program."""

    class _Process:
        def __init__(self, pid):
            self.pid = pid

        def kill(self):
            try:
                os.kill(self.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass

        def wait(self):
            wait(lambda: not is_running(self.pid))

    def __init__(self, program):  # pylint: disable=super-init-not-called
        self.home = None
        self._own_home = False
        self.process = self._Process(wait(lambda: processes_of(program))[0])


class Portable(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.system_log = SystemLog()

    @classmethod
    def tearDownClass(cls):
        cls.system_log.close()

    def setUp(self):
        self.system_log.lines()
        self.home = tempfile.mkdtemp(prefix="Anne d'été ")
        self.addCleanup(self.remove_home)
        os.makedirs(os.path.join(self.home, "Applications", "Autre.app"))
        self.downloads = os.path.join(self.home, "Downloads")
        self.destination = os.path.join(self.home, "Applications", "Pelmora.app")
        self.trash = os.path.join(self.home, "data", "Trash", "files")
        self.settings = os.path.join(self.home, "config", "MORVEL", "Pelmora.conf")
        self.environment = {"XDG_DATA_HOME": os.path.join(self.home, "data"), "LANGUAGE": "en"}

    def remove_home(self):
        for folder in ("Applications", "Downloads"):
            for path in (os.path.join(root, "bin", "pelmora") for root, _, _ in
                         os.walk(os.path.join(self.home, folder))):
                for pid in processes_of(path):
                    os.kill(pid, signal.SIGKILL)
        shutil.rmtree(self.home)

    def start(self, bundle, *arguments, **environment):
        return Application(os.path.join(bundle, "bin", "pelmora"), *arguments, home=self.home,
                           environment={**self.environment, **environment})

    def running(self, bundle):
        return Running(os.path.join(bundle, "bin", "pelmora"))

    def logged(self):
        """The routine's lines of the system log, each with its priority."""
        lines = []
        for line in self.system_log.lines():
            found = re.match(r"(?s)<(\d+)>.{15} pelmora\[\d+\]: ((?:INFO|WARNING|ERROR) -- .*?|Trash .*?)\x00?$", line)
            if found:
                lines.append((int(found[1]), found[2]))
        return lines

    def stored(self):
        if not os.path.exists(self.settings):
            return ""
        with open(self.settings, encoding="utf-8") as file:
            return file.read()

    def test_declining_asks_again_and_the_box_does_not(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.find("label", HOME_TITLE.replace("?", r"\?"))
            pelmora.find("label", f"{BODY} {DOWNLOADS_NOTE}")
            pelmora.press("push button", STAY)
            pelmora.find("label", os.path.join(bundle, "bin", "pelmora"))
        self.assertEqual(self.stored(), "")
        with self.start(bundle) as pelmora:
            pelmora.press("check box", BOX)
            pelmora.press("push button", STAY)
            pelmora.find("label", os.path.join(bundle, "bin", "pelmora"))
        self.assertIn("moveToApplicationsFolderAlertSuppress=true\n", self.stored())
        with self.start(bundle) as pelmora:
            pelmora.find("label", os.path.join(bundle, "bin", "pelmora"))
        self.assertFalse(os.path.exists(self.destination))

    def test_escape_declines(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            alert = pelmora.find("push button", MOVE)
            wait(lambda: "focused" in [state.value_nick for state in alert.get_state_set().get_states()])
            subprocess.run(["xdotool", "key", "Escape"], check=True)
            pelmora.find("label", os.path.join(bundle, "bin", "pelmora"))

    def test_the_question_is_french_for_the_french(self):
        bundle = make_bundle(os.path.join(self.home, "Bureau", "Pelmora.app"))
        with self.start(bundle, LANGUAGE="fr_FR:en") as pelmora:
            pelmora.find("label", "Déplacer vers le dossier Applications de votre dossier personnel\u202f\\?")
            pelmora.find("label", "Je peux me déplacer vers le dossier Applications si vous le souhaitez.")
            pelmora.find("check box", "Ne plus afficher ce message")
            pelmora.find("push button", "Déplacer vers le dossier Applications")
            pelmora.press("push button", "Ne pas déplacer")
            pelmora.find("label", os.path.join(bundle, "bin", "pelmora"))

    def test_accepting_moves_and_starts_again_with_what_was_asked_for(self):
        bundle = make_bundle(os.path.join(self.downloads, "L'été \"2\" $HOME", "Pelmora.app"))
        with self.start(bundle, "--carte", "l'été.xml") as pelmora:
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        self.assertFalse(os.path.exists(bundle))
        self.assertFalse(os.path.exists(self.trash))
        self.assertEqual(self.logged(), [(INFO, "INFO -- Moving myself to the Applications folder")])
        with self.running(self.destination) as moved:
            moved.find("label", "\n".join([os.path.join(self.destination, "bin", "pelmora"), "--carte", "l'été.xml"]))

    def test_the_next_start_does_not_wait_for_the_launcher_to_ask(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            with self.running(self.destination) as moved:
                moved.find("label", os.path.join(self.destination, "bin", "pelmora"))
            self.assertEqual(pelmora.process.wait(timeout=20), 0)

    def test_a_copy_that_is_started_from_inside_itself_moves(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with Application("sh", "-c", 'cd "$1" && exec ./pelmora carte.xml', "sh", os.path.join(bundle, "bin"),
                         home=self.home, environment=self.environment) as pelmora:
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        self.assertEqual(os.listdir(self.downloads), [])
        with self.running(self.destination) as moved:
            moved.find("label", "\n".join([os.path.join(self.destination, "bin", "pelmora"), "carte.xml"]))

    def test_a_file_system_without_locks_keeps_nobody_from_starting(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        # As a network's file system answers; the tracer is not the program's parent, and sees no leaks.
        with Application("strace", "-D", "-o", "/dev/null", "-e", "inject=flock:error=EBADF",
                         os.path.join(bundle, "bin", "pelmora"), home=self.home,
                         environment={**self.environment, "ASAN_OPTIONS": "detect_leaks=0"}) as pelmora:
            pelmora.press("push button", STAY)
            pelmora.find("label", os.path.join(bundle, "bin", "pelmora"))

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
            moved.find("label", os.path.join(self.destination, "bin", "pelmora"))
        self.assertFalse(os.path.exists(os.path.join(self.destination, "ancien")))

    def test_a_running_copy_is_switched_to(self):
        make_bundle(self.destination)
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(self.destination) as first:
            first.find("label", os.path.join(self.destination, "bin", "pelmora"))
            with self.start(bundle) as pelmora:
                pelmora.press("push button", MOVE)
                self.assertEqual(pelmora.process.wait(timeout=20), 0)
            self.assertEqual(self.logged(), [(INFO, "INFO -- Moving myself to the Applications folder"),
                                             (INFO, "INFO -- Switching to an already running version")])
            # This one knows nothing of the first: opening it is starting it once more.
            wait(lambda: len(processes_of(os.path.join(self.destination, "bin", "pelmora"))) == 2)
        self.assertTrue(os.path.exists(bundle))

    def test_a_copy_that_runs_already_is_not_asked_again(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as first:
            first.find("push button", STAY)
            with self.start(bundle) as second:
                self.assertEqual(second.process.wait(timeout=20), 0)
            first.press("push button", STAY)
            first.find("label", os.path.join(bundle, "bin", "pelmora"))
            with self.start(bundle) as third:
                third.find("label", os.path.join(bundle, "bin", "pelmora"))

    def test_a_read_only_source_stays_where_it_is(self):
        disk = os.path.join(self.home, "disque")
        os.mkdir(disk)
        bundle = make_bundle(os.path.join(self.home, "source", "Pelmora.app"))
        mount("--bind", "-o", "ro", os.path.dirname(bundle), disk)
        self.addCleanup(subprocess.run, ["umount", "--lazy", disk], check=True)
        bundle = os.path.join(disk, "Pelmora.app")
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        self.assertTrue(os.path.exists(os.path.join(bundle, "bin", "pelmora")))
        self.assertEqual(self.logged(), [
            (INFO, "INFO -- Moving myself to the Applications folder"),
            (WARNING, f"WARNING -- Could not delete '{bundle}': Read-only file system"),
            (ERROR, "Trash AppleScript error: there is nothing that runs scripts here"),
            (ERROR, f"ERROR -- Could not trash '{bundle}'"),
            (WARNING, "WARNING -- Could not delete application after moving it to Applications folder")])
        with self.running(self.destination) as moved:
            moved.find("label", os.path.join(self.destination, "bin", "pelmora"))
        self.assertTrue(os.access(os.path.join(self.destination, "bin", "pelmora"), os.W_OK))

    def lock_applications(self, answer):
        """Makes the Applications folder read-only; the program that asks for a password answers by this command, which
        may run the rest of its words with an administrator's rights: where the folder can be written to."""
        folder = os.path.join(self.home, "Applications")
        mount("--bind", folder, folder)
        self.addCleanup(subprocess.run, ["umount", "--lazy", folder], check=True)
        mount("-o", "remount,bind,ro", folder)
        programs = os.path.join(self.home, "programs")
        os.mkdir(programs)
        path = os.path.join(programs, "pkexec")
        with open(path, "w", encoding="utf-8") as script:
            script.write(f"#!/bin/sh\nfolder=$HOME/Applications\n{answer}\n")
        os.chmod(path, 0o755)
        self.environment["PATH"] = programs + os.pathsep + os.environ["PATH"]

    def test_an_administrator_is_asked_where_the_user_may_not_write(self):
        make_bundle(self.destination)
        with open(os.path.join(self.destination, "ancien"), "w", encoding="utf-8"):
            pass
        self.lock_applications('mount -o remount,bind,rw "$folder" && exec "$@"')
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        # As somebody careful unpacks it: afterwards the administrator owns it, and the user is to start it.
        for folder, _, _ in os.walk(bundle):
            os.chmod(folder, 0o700)
        os.chmod(os.path.join(bundle, "bin", "pelmora"), 0o700)
        with self.start(bundle) as pelmora:
            pelmora.find("label", f"{BODY} {PASSWORD_NOTE}")
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        self.assertEqual(self.logged(), [(INFO, "INFO -- Moving myself to the Applications folder")])
        self.assertFalse(os.path.exists(bundle))
        with self.running(self.destination) as moved:
            moved.find("label", os.path.join(self.destination, "bin", "pelmora"))
        self.assertEqual(sorted(os.listdir(os.path.join(self.home, "Applications"))), ["Autre.app", "Pelmora.app"])
        for path in ("", "bin", "bin/pelmora", "share/pelmora"):
            self.assertEqual(os.stat(os.path.join(self.destination, path)).st_mode & 0o7777, 0o755, path)
        self.assertFalse(os.path.exists(os.path.join(self.destination, "ancien")))

    def test_without_the_password_the_start_goes_on(self):
        self.lock_applications("exit 126")
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            pelmora.find("label", os.path.join(bundle, "bin", "pelmora"))
        self.assertEqual(self.logged(), [(INFO, "INFO -- Moving myself to the Applications folder"),
                                         (INFO, "INFO -- Not moving because user canceled authorization")])

    def test_rights_that_are_refused_are_a_failure(self):
        self.lock_applications("exit 127")
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            pelmora.find("label", "Could not move to Applications folder")
            self.assertEqual(self.logged(), [
                (INFO, "INFO -- Moving myself to the Applications folder"),
                (ERROR, "ERROR -- Could not copy myself to /Applications with authorization")])
            pelmora.press("push button", "OK")
            pelmora.find("label", os.path.join(bundle, "bin", "pelmora"))

    def test_a_failure_is_shown_and_the_start_goes_on(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        os.mkfifo(os.path.join(bundle, "tube"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            pelmora.find("label", "Could not move to Applications folder")
            self.assertEqual(self.logged(), [
                (INFO, "INFO -- Moving myself to the Applications folder"),
                (ERROR, f"ERROR -- Could not copy '{bundle}' to '{self.destination}' (Operation not supported)"),
                (ERROR, f"ERROR -- Could not copy myself to {self.destination}")])
            pelmora.press("push button", "OK")
            pelmora.find("label", os.path.join(bundle, "bin", "pelmora"))
        self.assertFalse(os.path.exists(self.destination))

    def put_applications_on_a_disk(self, size):
        """The Applications folder on a disk of its own, with an old copy. The folder of that disk's trash."""
        applications = os.path.join(self.home, "Applications")
        mount("-t", "tmpfs", "-o", f"size={size}", "tmpfs", applications)
        self.addCleanup(subprocess.run, ["umount", "--lazy", applications], check=True)
        os.makedirs(os.path.join(self.destination, "ancien"))
        return os.path.join(applications, f".Trash-{os.getuid()}")

    def test_an_applications_folder_on_another_disk_has_its_own_trash(self):
        trash = self.put_applications_on_a_disk("100m")
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        self.assertEqual(os.listdir(self.downloads), [])
        self.assertTrue(os.path.exists(os.path.join(trash, "files", "Pelmora.app", "ancien")))
        with self.running(self.destination) as moved:
            moved.find("label", os.path.join(self.destination, "bin", "pelmora"))

    def test_a_disk_that_is_full_midway_leaves_the_source_and_the_old_copy(self):
        trash = self.put_applications_on_a_disk("256k")
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with open(os.path.join(bundle, "données"), "wb") as file:
            file.write(bytes(1 << 20))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            pelmora.find("label", "Could not move to Applications folder")
            self.assertEqual(self.logged()[1:], [
                (ERROR, f"ERROR -- Could not copy '{bundle}' to '{self.destination}' (No space left on device)"),
                (ERROR, f"ERROR -- Could not copy myself to {self.destination}")])
            pelmora.press("push button", "OK")
            pelmora.find("label", os.path.join(bundle, "bin", "pelmora"))
        self.assertEqual(os.listdir(os.path.dirname(trash)), [os.path.basename(trash)])
        self.assertTrue(os.path.exists(os.path.join(trash, "files", "Pelmora.app", "ancien")))

    def test_without_a_trash_the_old_copy_stays(self):
        make_bundle(self.destination)
        with open(self.environment["XDG_DATA_HOME"], "w", encoding="utf-8"):
            pass
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            pelmora.find("label", "Could not move to Applications folder")
            self.assertEqual(self.logged()[1:], [
                (ERROR, "Trash AppleScript error: there is nothing that runs scripts here"),
                (ERROR, f"ERROR -- Could not trash '{self.destination}'")])
            pelmora.press("push button", "OK")
            pelmora.find("label", os.path.join(bundle, "bin", "pelmora"))
        self.assertTrue(os.path.exists(os.path.join(self.destination, "bin", "pelmora")))

    def test_the_whole_application_starts_where_it_is(self):
        bundle = unpack(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle, "--simulate") as pelmora:
            pelmora.press("push button", STAY)
            pelmora.find("push button", "Lire")
        self.assertFalse(os.path.exists(self.destination))

    def test_the_whole_application_moves_with_its_settings_and_is_switched_to(self):
        os.makedirs(os.path.dirname(self.settings))
        with open(self.settings, "w", encoding="utf-8") as file:
            file.write(f"[General]\nMVAttestationsFolder={self.home}/Attestations\nMVLVitMode=2\n")
        bundle = unpack(os.path.join(self.downloads, "Pelmora.app"))
        program = os.path.join(self.destination, "bin", "pelmora")
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
            # The one that was opened has handed over to the one that runs.
            wait(lambda: len(processes_of(program)) == 1)
            self.assertEqual(processes_of(program), [moved.process.pid])
        self.assertTrue(os.path.exists(bundle))


if __name__ == "__main__":
    unittest.main()
