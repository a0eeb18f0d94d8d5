"""A system log for a test, in its own mount namespace."""

import os
import socket
import subprocess
import tempfile

from disks import mount


class SystemLog:
    """A /dev in this namespace only, with the system log's socket."""

    def __init__(self):
        self._folder = tempfile.mkdtemp()
        mount("-t", "tmpfs", "tmpfs", self._folder)
        for device in ("null", "zero", "full", "random", "urandom"):
            path = os.path.join(self._folder, device)
            open(path, "w", encoding="utf-8").close()
            mount("--bind", os.path.join("/dev", device), path)
        mount("--rbind", self._folder, "/dev")
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.socket.bind("/dev/log")
        self.socket.settimeout(10)

    def lines(self):
        """New log lines, without waiting."""
        self.socket.setblocking(False)
        lines = []
        while True:
            try:
                lines.append(self.socket.recv(65536).decode())
            except BlockingIOError:
                self.socket.settimeout(10)
                return lines

    def close(self):
        self.socket.close()
        for mounted in ("/dev", self._folder):
            subprocess.run(["umount", "--lazy", "--recursive", mounted], check=True)
        os.rmdir(self._folder)
