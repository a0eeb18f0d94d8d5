"""Drives programs in real windows, through the accessibility tree."""

import os
import re
import shutil
import signal
import subprocess
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402


def walk(node):
    """The node and all below it; nodes that die meanwhile are passed over."""
    yield node
    try:
        children = [node.get_child_at_index(index) for index in range(node.get_child_count())]
    except GLib.GError:
        return
    for child in children:
        if child is not None:
            yield from walk(child)


def wait(condition, seconds=15):
    """The condition's value as soon as it is true."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        try:
            value = condition()
        except (GLib.GError, StopIteration):
            value = None
        if value:
            return value
        # The accessibility bus has no event for everything that is waited for here.
        time.sleep(0.01)
    raise AssertionError("waited in vain")


class Application:
    """A running program with a home of its own; a context manager that leaves nothing behind."""

    def __init__(self, *command):
        self.home = tempfile.mkdtemp()
        environment = dict(os.environ, HOME=self.home, XDG_CONFIG_HOME=os.path.join(self.home, "config"),
                           QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", LC_ALL="C.UTF-8")
        self.process = subprocess.Popen(command, env=environment)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        shutil.rmtree(self.home)

    def node(self):
        def running():
            desktop = Atspi.get_desktop(0)
            return next(node for node in (desktop.get_child_at_index(index)
                                          for index in range(desktop.get_child_count()))
                        if node is not None and node.get_process_id() == self.process.pid)
        return wait(running)

    def find(self, role, name):
        """The visible control of that role whose whole name matches."""
        def found():
            return next(node for node in walk(self.node())
                        if node.get_role_name() == role and re.fullmatch(name, node.get_name() or "", re.DOTALL)
                        and node.get_state_set().contains(Atspi.StateType.SHOWING))
        return wait(found)

    def children(self):
        """Process numbers of the programs that it has started."""
        found = subprocess.run(["pgrep", "-P", str(self.process.pid)], capture_output=True, text=True, check=False)
        return [int(number) for number in found.stdout.split()]

    def terminate(self):
        self.process.send_signal(signal.SIGTERM)
        return self.process.wait(timeout=10)


def is_running(pid):
    """Whether the process lives; one that has ended and waits to be asked for does not."""
    try:
        with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
            return file.read().rpartition(")")[2].split()[0] not in "ZX"
    except FileNotFoundError:
        return False
