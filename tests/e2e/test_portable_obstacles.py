"""Obstacles to the move of a portable copy: rights, disks, the trash. Usage: test_portable_obstacles.py STAGE
MOVABLE_PROGRAM, in a mount namespace of its own"""

import os
import subprocess
import unittest

from disks import mount
from portable import BODY, ERROR, INFO, MOVE, PASSWORD_NOTE, PortableTest, WARNING, make_bundle, program_of


class Obstacles(PortableTest):
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
            (ERROR, f"ERROR -- Could not trash '{bundle}'"),
            (WARNING, "WARNING -- Could not delete application after moving it to Applications folder")])
        with self.running(self.destination) as moved:
            moved.find("label", program_of(self.destination))
        self.assertTrue(os.access(os.path.join(self.destination, "bin", "pelmora"), os.W_OK))

    def lock_applications(self, answer):
        """Makes the Applications folder read-only, and replaces pkexec by this shell command. The command can make the
        folder writable and run its arguments, as with an administrator's rights."""
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
        # Unpacked for one user only; after the move the administrator owns it and users must be able to start it.
        for folder, _, _ in os.walk(bundle):
            os.chmod(folder, 0o700)
        for program in (os.path.join(bundle, "bin", "pelmora"), program_of(bundle)):
            os.chmod(program, 0o700)
        with self.start(bundle) as pelmora:
            pelmora.find("label", f"{BODY} {PASSWORD_NOTE}")
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        self.assertEqual(self.logged(), [(INFO, "INFO -- Moving myself to the Applications folder")])
        self.assertFalse(os.path.exists(bundle))
        with self.running(self.destination) as moved:
            moved.find("label", program_of(self.destination))
        self.assertEqual(sorted(os.listdir(os.path.join(self.home, "Applications"))), ["Autre.app", "Pelmora.app"])
        for path in ("", "bin", "bin/pelmora", program_of(""), "share/pelmora"):
            self.assertEqual(os.stat(os.path.join(self.destination, path)).st_mode & 0o7777, 0o755, path)
        self.assertFalse(os.path.exists(os.path.join(self.destination, "ancien")))

    def test_without_the_password_the_start_goes_on(self):
        self.lock_applications("exit 126")
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            pelmora.find("label", program_of(bundle))
        self.assertEqual(self.logged(), [(INFO, "INFO -- Moving myself to the Applications folder"),
                                         (INFO, "INFO -- Not moving because user canceled authorization")])

    def test_rights_that_are_refused_are_a_failure(self):
        self.lock_applications("exit 127")
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            pelmora.find("label", "Le déplacement vers le dossier Applications a échoué")
            self.assertEqual(self.logged(), [
                (INFO, "INFO -- Moving myself to the Applications folder"),
                (ERROR, "ERROR -- Could not copy myself to /Applications with authorization")])
            pelmora.press("push button", "OK")
            pelmora.find("label", program_of(bundle))

    def test_a_source_that_is_swapped_for_a_link_while_the_user_is_asked_is_not_followed(self):
        secret = os.path.join(self.home, "privé")
        os.makedirs(os.path.join(secret, "bin"), mode=0o700)
        with open(os.path.join(secret, "secret"), "w", encoding="utf-8"):
            pass
        os.chmod(secret, 0o700)
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        self.lock_applications(f'mv "{bundle}" "{bundle}.away" && ln -s "{secret}" "{bundle}" && '
                               'mount -o remount,bind,rw "$folder" && exec "$@"')
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            self.assertEqual(pelmora.process.wait(timeout=20), 0)
        with self.running(self.destination) as moved:
            moved.find("label", program_of(self.destination))
        self.assertFalse(os.path.exists(os.path.join(self.destination, "secret")))
        self.assertEqual(os.stat(secret).st_mode & 0o777, 0o700)

    def test_a_failure_is_shown_and_the_start_goes_on(self):
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        os.mkfifo(os.path.join(bundle, "tube"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            pelmora.find("label", "Le déplacement vers le dossier Applications a échoué")
            self.assertEqual(self.logged(), [
                (INFO, "INFO -- Moving myself to the Applications folder"),
                (ERROR, f"ERROR -- Could not copy '{bundle}' to '{self.destination}' (Operation not supported)"),
                (ERROR, f"ERROR -- Could not copy myself to {self.destination}")])
            pelmora.press("push button", "OK")
            pelmora.find("label", program_of(bundle))
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
            moved.find("label", program_of(self.destination))

    def test_a_disk_that_is_full_midway_leaves_the_source_and_the_old_copy(self):
        trash = self.put_applications_on_a_disk("256k")
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with open(os.path.join(bundle, "données"), "wb") as file:
            file.write(bytes(1 << 20))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            pelmora.find("label", "Le déplacement vers le dossier Applications a échoué")
            self.assertEqual(self.logged()[1:], [
                (ERROR, f"ERROR -- Could not copy '{bundle}' to '{self.destination}' (No space left on device)"),
                (ERROR, f"ERROR -- Could not copy myself to {self.destination}")])
            pelmora.press("push button", "OK")
            pelmora.find("label", program_of(bundle))
        self.assertEqual(os.listdir(os.path.dirname(trash)), [os.path.basename(trash)])
        self.assertTrue(os.path.exists(os.path.join(trash, "files", "Pelmora.app", "ancien")))

    def test_without_a_trash_the_old_copy_stays(self):
        make_bundle(self.destination)
        with open(self.environment["XDG_DATA_HOME"], "w", encoding="utf-8"):
            pass
        bundle = make_bundle(os.path.join(self.downloads, "Pelmora.app"))
        with self.start(bundle) as pelmora:
            pelmora.press("push button", MOVE)
            pelmora.find("label", "Le déplacement vers le dossier Applications a échoué")
            self.assertEqual(self.logged()[1:], [(ERROR, f"ERROR -- Could not trash '{self.destination}'")])
            pelmora.press("push button", "OK")
            pelmora.find("label", program_of(bundle))
        self.assertTrue(os.path.exists(os.path.join(self.destination, "bin", "pelmora")))


if __name__ == "__main__":
    unittest.main()
