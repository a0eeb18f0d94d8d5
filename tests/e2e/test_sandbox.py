"""What code in the card service's process can do. Usage: test_sandbox.py STAGE PROBING, in a desktop and in a mount
namespace of its own. PROBING is a reading library that tries what the sandbox must refuse."""

import contextlib
import ctypes
import os
import re
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import unittest

from installation import FOLDER, LIBRARY, lay_over_system
from service import CardService
from waiting import is_running, wait_until

STAGE = sys.argv.pop(1)
PROBING = sys.argv.pop(1)
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")

# What is tried under each protection of the diagnosis, and how it is refused.
REFUSALS = {
    "Privilèges": {"privileges": "EPERM"},
    "Réseau": {**dict.fromkeys(("inet", "inet6", "netlink", "packet", "vsock"), "EACCES"), "uring": "ENOSYS"},
    "Sockets locales": {**dict.fromkeys(("socket", "abstract", "display", "display2", "datagram", "sendto",
                                       "sendmsg", "bind"), "EACCES"),
                        "listener": "EPERM", "start": "ECHILD"},
    "Fichiers": dict.fromkeys(("create", "write", "truncate", "truncate3", "temporary", "shared", "shared2", "folder",
                               "terminal"), "EACCES"),
    "Droits et dates": dict.fromkeys(("chmod", "fchmod", "fchmodat2", "chown", "fchown", "setxattr", "removexattr",
                                      "utimensat", "futimens", "flags", "truncate2"), "EPERM"),
    "Signaux": dict.fromkeys(("kill", "tgkill", "sigqueue", "prlimit"), "EPERM"),
}
PERMITTED = dict.fromkeys(("unix", "pcsc", "read", "null", "log", "settings", "self"), "OK")

# A service of the session bus that writes a file when it is started.
STARTED_OUTSIDE = "[D-BUS Service]\nName=com.example.Probe\nExec=/usr/bin/touch {trace}\n"


def listen(address):
    listener = socket.socket(socket.AF_UNIX)
    listener.bind(address)
    listener.listen()
    return listener


def own_listener():
    """Runs in the service's process before its program: another process already decides on its system calls, as in some
    containers."""
    ALLOW, SET_FILTER, NEW_LISTENER, NO_NEW_PRIVS, DEATH_SIGNAL = 0x7FFF0000, 1, 8, 38, 1
    SECCOMP = 317 if os.uname().machine == "x86_64" else 277  # the number on newer architectures
    library = ctypes.CDLL(None, use_errno=True)
    code = ctypes.create_string_buffer(struct.pack("HBBI", 0x06, 0, 0, ALLOW))
    program = ctypes.create_string_buffer(struct.pack("HxxxxxxQ", 1, ctypes.addressof(code)))
    library.prctl(NO_NEW_PRIVS, 1, 0, 0, 0)
    listener = library.syscall(SECCOMP, SET_FILTER, NEW_LISTENER, program)
    if listener < 0:
        os._exit(1)
    if os.fork() == 0:
        library.prctl(DEATH_SIGNAL, signal.SIGKILL, 0, 0, 0)
        os.closerange(0, listener)
        os.closerange(listener + 1, 1024)
        signal.alarm(120)  # ends it if the service has ended before that signal was requested
        signal.pause()


@unittest.skipUnless(os.stat("/").st_uid == 0, "the system's folders are not root's in this namespace")
class SandboxTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.layer = lay_over_system()
        cls.addClassCleanup(os.rmdir, cls.layer)
        cls.addClassCleanup(subprocess.run, ["umount", "-l", "/usr/lib", cls.layer], check=True)
        os.mkdir(FOLDER, 0o755)
        shutil.copy(PROBING, LIBRARY)
        os.chmod(LIBRARY, 0o755)

    def setUp(self):
        self.home = self.enterContext(tempfile.TemporaryDirectory())
        for folder in ("Library/Logs/santesocial", "Library/Preferences/santesocial/sedica"):
            os.makedirs(os.path.join(self.home, folder))
        self.old = os.path.join(self.home, "old")
        with open(self.old, "w", encoding="ascii") as file:
            file.write("old")
        os.chmod(self.old, 0o600)
        with contextlib.suppress(OSError):
            os.setxattr(self.old, "user.old", b"1")
        self.sibling = subprocess.Popen(["sleep", "600"])
        self.addCleanup(self.sibling.wait)
        self.addCleanup(self.sibling.kill)
        self.shared = self.enterContext(tempfile.NamedTemporaryFile(dir="/dev/shm")).name
        self.trace = os.path.join(self.home, "started-outside")
        self.offer_service()
        self.sockets = {name: self.enterContext(listen(os.path.join(self.home, name))) for name in ("pcsc", "other")}
        self.abstract = "pelmora-" + os.path.basename(self.home)
        self.enterContext(listen("\0" + self.abstract))

    def offer_service(self):
        """Lets the session bus know of a service that it can start."""
        folder = os.path.join(os.environ["XDG_RUNTIME_DIR"], "dbus-1", "services")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "com.example.Probe.service"), "w", encoding="utf-8") as file:
            file.write(STARTED_OUTSIDE.format(trace=self.trace))
        subprocess.run(["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
                        "/org/freedesktop/DBus", "org.freedesktop.DBus.ReloadConfig"], check=True, stdout=subprocess.DEVNULL)

    def service(self, *arguments):
        """Its environment names every socket and process that a library could try to reach: the protection must not
        depend on hiding them."""
        return CardService(STAGE, *arguments, HOME=self.home, PCSCLITE_CSOCK_NAME=os.path.join(self.home, "pcsc"),
                           PROBE_SOCKET=os.path.join(self.home, "other"), PROBE_ABSTRACT="@" + self.abstract,
                           PROBE_DISPLAY="@/tmp/.X11-unix/X" + os.environ["DISPLAY"].lstrip(":"),
                           PROBE_SIBLING=str(self.sibling.pid), PROBE_SHARED=self.shared,
                           DBUS_SESSION_BUS_ADDRESS=os.environ["DBUS_SESSION_BUS_ADDRESS"])

    @staticmethod
    def probe(service):
        """The result of each attempt, and the log."""
        with service:
            if service.ask("init", Mode="1")["Status"] != "success":
                raise AssertionError(service.log())
            informations = service.ask("informations")["Informations"]
            log = service.log()
        report = re.search("<version>(.*)</version>", informations).group(1)
        return dict(entry.split("=") for entry in report.split()), log

    def assert_held(self, results, log):
        """Everything is refused, except by protections that the log reports as missing."""
        missing = [name for name in REFUSALS if name in log]
        if missing:
            print("not all can be tested here:", log, file=sys.stderr)
        expected = dict(PERMITTED)
        for name, refusals in REFUSALS.items():
            expected |= {} if name in missing else refusals
        if "flags" in expected and results["flags"] == "ENOTTY":
            del expected["flags"]  # the file system has no such flags
        self.assertEqual({name: results[name] for name in expected}, expected)
        return missing

    def test_code_in_the_process_reaches_nothing_outside(self):
        missing = self.assert_held(*self.probe(self.service()))
        if "Fichiers" not in missing:
            self.assertFalse(os.path.exists("/tmp/pelmora-probe"))
            self.assertFalse(os.path.exists("/dev/shm/pelmora-probe"))
            with open(self.old, encoding="ascii") as file:
                self.assertEqual(file.read(), "old")
        if "Signaux" not in missing:
            self.assertIsNone(self.sibling.poll())
        if "Sockets locales" not in missing:
            self.assertFalse(os.path.exists(self.trace))
            self.sockets["pcsc"].settimeout(10)
            self.sockets["pcsc"].accept()[0].close()

    def test_what_older_kernels_do_not_hold_is_held_otherwise(self):
        service = self.service()
        # Version 2 of Landlock, the kernel's rules on files, covers neither truncation nor signals.
        service.arguments = ("-f", "-qq", "-o", "/dev/null", "-e", "trace=landlock_create_ruleset", "-e",
                             "inject=landlock_create_ruleset:retval=2:when=1", service.program, *service.arguments)
        service.program = "/usr/bin/strace"
        service.environment["ASAN_OPTIONS"] = "detect_leaks=0"  # which a traced process cannot do
        results, log = self.probe(service)
        self.assert_held(results, log)
        self.assertIsNone(self.sibling.poll())

    def test_where_somebody_else_answers_for_connections_the_rest_holds(self):
        service = self.service()
        service.before = own_listener
        results, log = self.probe(service)
        self.assertRegex(log, r"^com\.morvel\.lvit: protections indisponibles : Sockets locales \(")
        self.assert_held(results, log)

    def test_where_the_protections_are_missing_it_says_so_and_works(self):
        for call, protection in (("prctl", "Privilèges"), ("seccomp", "Réseau"),
                                 ("landlock_create_ruleset", "Fichiers")):
            with self.subTest(protection), tempfile.TemporaryDirectory() as folder:
                service = self.service("--simulate", SPECIMEN)
                service.arguments = ("-f", "-o", os.path.join(folder, "calls"), "-e", f"inject={call}:error=ENOSYS",
                                     service.program, *service.arguments)
                service.program = "/usr/bin/strace"
                service.environment["ASAN_OPTIONS"] = "detect_leaks=0"
                with service:
                    self.assertTrue(service.bind(mode="0"))
                    self.assertIn("SPECIMEN", service.read())
                    self.assertEqual(service.finish(), 0)
                    self.assertRegex(service.log(), "^com.morvel.lvit: protections indisponibles : .*"
                                                    f"{protection} \\([^)]+\\)")
                    self.assertEqual(service.log().count("\n"), 1)

    def test_the_diagnosis_tells_each_protection(self):
        service = self.service()
        environment = {**service.environment, "PCSCLITE_CSOCK_NAME": "/nonexistent"}
        text = subprocess.run([service.program, "--diagnose"], env=environment, capture_output=True, text=True,
                              timeout=60).stdout
        section = text.split("\nProtections\n")[1].split("\n\n")[0]
        self.assertEqual([line[2:22].rstrip() for line in section.splitlines()], list(REFUSALS))

    def test_nothing_of_it_stays_when_it_is_killed(self):
        with self.service() as service:
            self.assertTrue(service.ask("init", Mode="2")["Status"] == "success")
            with open(f"/proc/{service.process.pid}/task/{service.process.pid}/children", encoding="ascii") as file:
                children = [int(child) for child in file.read().split()]
            service.process.kill()
            service.process.wait()
        for child in children:
            wait_until(lambda: not is_running(child), what=f"the end of {child}")


if __name__ == "__main__":
    unittest.main()
