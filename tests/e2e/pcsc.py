"""A PC/SC service of the test's own, with readers that wait for virtual cards. The test runs in a network of its own
(in-own-network.sh): other processes cannot reach the readers, and parallel tests can use the same ports."""

import fcntl
import itertools
import os
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile

from waiting import wait_until

DRIVER = "/usr/lib/pcsc/drivers/serial/libifdvpcd.so"
# The only model that the application accepts.
MODEL = "Feitian SCR301"

CONFIGURATION = """\
FRIENDLYNAME "{name}"
DEVICENAME {device}
LIBPATH {driver}
CHANNELID {channel}
"""


# Ends the started program with the thread that started it, also when a test is killed.
ENDING_WITH_PARENT = ("setpriv", "--pdeathsig", "KILL")


def raise_loopback():
    """Brings up the loopback, which is down in a new network."""
    SIOCGIFFLAGS, SIOCSIFFLAGS, IFF_UP = 0x8913, 0x8914, 1
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as anything:
        flags, = struct.unpack("16xH22x", fcntl.ioctl(anything, SIOCGIFFLAGS, struct.pack("16s24x", b"lo")))
        if not flags & IFF_UP:
            fcntl.ioctl(anything, SIOCSIFFLAGS, struct.pack("16sH22x", b"lo", flags | IFF_UP))


def is_listening(port):
    """Whether a program listens on that port. Does not connect, which would insert a card."""
    with open("/proc/self/net/tcp", encoding="ascii") as table, open("/proc/self/net/tcp6", encoding="ascii") as more:
        rows = [line.split() for line in [*table, *more]]
    LISTEN = "0A"
    return any(row[3] == LISTEN and int(row[1].rpartition(":")[2], 16) == port for row in rows if ":" in row[1])


class Reader:
    """A reader for virtual cards, which connect to the port. Its driver gives each reader a second, empty slot."""

    # Below the ports that the kernel gives to the cards' sockets.
    ports = itertools.count(20000, 2)

    def __init__(self, name=MODEL):
        self.name = name
        self.port = next(self.ports)

    def configuration(self, folder):
        # With one driver file for two readers the cards of one would appear in the other.
        driver = os.path.join(folder, f"libifd-{self.port}.so")
        if not os.path.exists(driver):
            shutil.copyfile(DRIVER, driver)
        return CONFIGURATION.format(name=self.name, device=f"/dev/null:0x{self.port:X}", driver=driver,
                                    channel=f"0x{self.port:X}")

    def is_ready(self):
        return is_listening(self.port) and is_listening(self.port + 1)


class DriverReader:
    """A reader with another driver and a device."""

    def __init__(self, driver, device, name=MODEL):
        self.name = name
        self.driver = driver
        self.device = device

    def configuration(self, _folder):
        return CONFIGURATION.format(name=self.name, device=self.device, driver=self.driver, channel="0")

    def is_ready(self):
        return True


class PcscService:
    """A running pcscd with the given readers; a context manager that cleans up."""

    def __init__(self, *readers, **environment):
        self.readers = readers
        self.process = None
        self.own_environment = environment

    def __enter__(self):
        raise_loopback()
        # Short: it becomes part of a UNIX socket's path.
        self.root = tempfile.mkdtemp(prefix="pcsc")
        os.makedirs(os.path.join(self.root, "run", "pcscd"))
        configuration = os.path.join(self.root, "readers")
        os.mkdir(configuration)
        with open(os.path.join(configuration, "readers"), "w", encoding="utf-8") as file:
            file.write("\n".join(reader.configuration(self.root) for reader in self.readers))
        try:
            self.start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self.kill()
        shutil.rmtree(self.root)

    @property
    def socket(self):
        return os.path.join(self.root, "run", "pcscd", "pcscd.comm")

    def environment(self):
        """The environment variables for using this service."""
        return {"PCSCLITE_CSOCK_NAME": self.socket}

    def start(self):
        """Starts the service and waits until it has its readers."""
        # The service's folder has a fixed path: it is mounted in the service's own namespace.
        script = 'mount --bind "$0/run" /run && exec /usr/sbin/pcscd --foreground --config "$0/readers" "$@"'
        self.process = subprocess.Popen(
            [*ENDING_WITH_PARENT, "unshare", "--mount", "sh", "-c", script, self.root, *self.polkit_option()],
            env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", **self.own_environment},
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(self.is_ready, what="the PC/SC service")

    @staticmethod
    def polkit_option():
        options = subprocess.run(["/usr/sbin/pcscd", "--help"], capture_output=True, text=True).stdout
        return ["--disable-polkit"] if "--disable-polkit" in options else []

    def is_ready(self):
        if self.process.poll() is not None:
            raise AssertionError(f"pcscd has ended: {self.process.returncode}")
        with socket.socket(socket.AF_UNIX) as client:
            try:
                client.connect(self.socket)
            except OSError:
                return False
        return all(reader.is_ready() for reader in self.readers)

    def stop(self):
        """Ends it as the system does."""
        self.end(signal.SIGTERM)

    def kill(self):
        """Ends it as a crash does."""
        self.end(signal.SIGKILL)

    def end(self, how):
        if self.process is not None:
            self.process.send_signal(how)
            self.process.wait(timeout=15)
            self.process = None

    def threads(self):
        return len(os.listdir(f"/proc/{self.process.pid}/task"))


class OtherProgram:
    """Another program that uses the reader (fakes/pcscclient.py); a context manager."""

    PROGRAM = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes", "pcscclient.py")

    def __init__(self, pcsc, action, reader):
        self.process = subprocess.Popen([*ENDING_WITH_PARENT, sys.executable, self.PROGRAM, action, reader],
                                        env={**os.environ, **pcsc.environment()},
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def __enter__(self):
        self.expect("ready")
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()

    def expect(self, line):
        found = self.process.stdout.readline().rstrip("\n")
        if found != line:
            raise AssertionError(f"the other program says {found!r}, not {line!r}")

    def go_on(self):
        """Lets it do the next step, and waits for that."""
        self.process.stdin.write("\n")
        self.process.stdin.flush()
        self.expect("done")
