"""Controls programs with real windows through the accessibility tree."""

import os
import re
import shutil
import signal
import subprocess
import tempfile

import gi

import wayland
from waiting import is_running, wait_until

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402


def walk(node):
    """The node and all nodes below it; nodes that disappear meanwhile are skipped."""
    yield node
    try:
        children = [node.get_child_at_index(index) for index in range(node.get_child_count())]
    except GLib.GError:
        return
    for child in children:
        if child is not None:
            yield from walk(child)


def wait(condition, seconds=15):
    """The condition's value as soon as it is true. An error of the accessibility bus counts as false."""
    def value():
        try:
            return condition()
        except (GLib.GError, StopIteration):
            return None
    # Polls: the bus does not have an event for everything.
    return wait_until(value, seconds)


def act(found):
    """Activates the found control. A disabled control has no actions: waits until it is enabled."""
    def actions():
        control = found()
        action = control and control.get_action_iface()
        return action if action and action.get_n_actions() else None
    wait(actions).do_action(0)


class Application:
    """A running program with its own home; a context manager that cleans up.

    The environment's values replace the usual ones or are added to them; None removes a value. A given home is kept."""

    def __init__(self, *command, home=None, environment=None, stdin=None):
        self.home = home or tempfile.mkdtemp()
        self._own_home = home is None
        changes = {"HOME": self.home, "XDG_CONFIG_HOME": os.path.join(self.home, "config"),
                   "QT_QPA_PLATFORM": "wayland" if wayland.HERE else "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
                   "LC_ALL": "C.UTF-8", **(environment or {})}
        values = {**os.environ, **changes}
        self.process = subprocess.Popen(command, stdin=stdin,
                                        env={key: value for key, value in values.items() if value is not None})

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        if self._own_home:
            shutil.rmtree(self.home)

    def node(self):
        def running():
            if self.process.poll() is not None:
                raise AssertionError(f"the program has ended with {self.process.returncode}")
            desktop = Atspi.get_desktop(0)
            for index in range(desktop.get_child_count()):
                try:
                    node = desktop.get_child_at_index(index)
                    if node is not None and node.get_process_id() == self.process.pid:
                        return node
                except GLib.GError:
                    pass  # A program that has ended and is still listed.
            return None
        return wait(running)

    def find_now(self, role, name, showing=True, inside=None):
        """The control of that role whose whole name matches, or None; where a node is given, one inside it."""
        for node in walk(inside or self.node()):
            try:
                if (node.get_role_name() == role and re.fullmatch(name, node.get_name() or "", re.DOTALL)
                        and (not showing or node.get_state_set().contains(Atspi.StateType.SHOWING))):
                    return node
            except GLib.GError:
                pass
        return None

    def find(self, role, name, showing=True):
        """The control of that role whose whole name matches, as soon as there is one."""
        try:
            return wait(lambda: self.find_now(role, name, showing))
        except AssertionError:
            raise AssertionError(f"no {role} named {name!r} among {self.names()}") from None

    def find_inside(self, window, role, name, showing=True):
        """The same inside one window, which is given as its role and name: other windows have such controls too."""
        def found():
            node = self.find_now(*window)
            return node and self.find_now(role, name, showing, node)
        return wait(found)

    def press_inside(self, window, name):
        """Presses a button inside one window."""
        act(lambda: self.find_inside(window, "push button", name))

    def wait_until_gone(self, role, name):
        try:
            wait(lambda: self.find_now(role, name) is None)
        except AssertionError:
            raise AssertionError(f"the {role} named {name!r} stays among {self.names()}") from None

    def names(self):
        """The content of the screen, for messages of failed tests."""
        found = []
        for node in walk(self.node()):
            try:
                if node.get_state_set().contains(Atspi.StateType.SHOWING):
                    found.append(f"{node.get_role_name()} {node.get_name()!r}")
            except GLib.GError:
                pass
        return found

    def press(self, role, name, showing=True):
        """Activates the control: presses the button, chooses the menu entry."""
        self.find(role, name, showing)
        act(lambda: self.find_now(role, name, showing))

    def choose(self, name):
        """Chooses an entry of the menu bar, which need not be open."""
        self.press("menu item", name, showing=False)

    def entries(self, menu):
        """The names of all entries of a submenu of the menu bar; separators have none."""
        entries = self.find("menu item", menu, showing=False).get_child_at_index(0)
        return [entries.get_child_at_index(index).get_name() for index in range(entries.get_child_count())]

    def is_enabled(self, role, name, showing=True):
        return self.find(role, name, showing).get_state_set().contains(Atspi.StateType.ENABLED)

    def text_of(self, role, name=".*"):
        """The text inside an editable or plain text control."""
        text = self.find(role, name).get_text_iface()
        return Atspi.Text.get_text(text, 0, Atspi.Text.get_character_count(text))

    def write_into(self, role, name, text):
        Atspi.EditableText.set_text_contents(self.find(role, name), text)

    def click(self, role, name, *keys):
        """A click of the mouse in the control's middle, with keys held down."""
        if wayland.HERE:
            wayland.hands.move(*self._middle_on_wayland(self.find(role, name)))
            wayland.hands.click(*keys)
            return
        box = Atspi.Component.get_extents(self.find(role, name), Atspi.CoordType.SCREEN)
        held = [part for key in keys for part in ("keydown", key)]
        left = [part for key in reversed(keys) for part in ("keyup", key)]
        subprocess.run(["xdotool", "mousemove", str(box.x + box.width // 2), str(box.y + box.height // 2), *held,
                        "click", "1", *left], check=True)

    def turn_wheel(self, role, name, notches):
        """Turns the wheel over the control's middle, down where the number is positive."""
        if wayland.HERE:
            wayland.hands.move(*self._middle_on_wayland(self.find(role, name)))
            wayland.hands.turn_wheel(notches)
            return
        box = Atspi.Component.get_extents(self.find(role, name), Atspi.CoordType.SCREEN)
        button = "5" if notches > 0 else "4"
        subprocess.run(["xdotool", "mousemove", str(box.x + box.width // 2), str(box.y + box.height // 2),
                        *["click", button] * abs(notches)], check=True)

    def _middle_on_wayland(self, control):
        """The control's centre on the screen: programs know only positions in their windows."""
        window = control
        while window.get_parent().get_role_name() != "application":
            window = window.get_parent()

        def place():
            """The window's position, when the compositor has given it the program's size."""
            size = Atspi.Component.get_extents(window, Atspi.CoordType.WINDOW)
            for shown in wayland.windows(window.get_name()):
                outside, inside = shown["rect"], shown["window_rect"]
                if (inside["width"], inside["height"]) == (size.width, size.height):
                    return outside["x"] + inside["x"], outside["y"] + inside["y"]
            return None
        x, y = wait(place)
        box = Atspi.Component.get_extents(control, Atspi.CoordType.WINDOW)
        return x + box.x + box.width // 2, y + box.y + box.height // 2

    def children(self):
        """Process numbers of the programs that it has started."""
        found = subprocess.run(["pgrep", "-P", str(self.process.pid)], capture_output=True, text=True, check=False)
        return [int(number) for number in found.stdout.split()]

    def terminate(self):
        self.process.send_signal(signal.SIGTERM)
        return self.process.wait(timeout=10)


class Opener:
    """Replaces the desktop's program for opening files and addresses, and records the requests."""

    def __init__(self, folder):
        self._record = os.path.join(folder, "opened")
        programs = os.path.join(folder, "programs")
        os.mkdir(programs)
        path = os.path.join(programs, "xdg-open")
        with open(path, "w", encoding="utf-8") as script:
            script.write(f"#!/bin/sh\nprintf '%s\\n' \"$1\" >>'{self._record}'\n")
        os.chmod(path, 0o755)
        self.environment = {"PATH": programs + os.pathsep + os.environ["PATH"]}

    def opened(self):
        """The opened files and addresses, in order."""
        try:
            with open(self._record, encoding="utf-8") as file:
                return file.read().splitlines()
        except FileNotFoundError:
            return []


def _some_window_is_active():
    """Whether a program knows that it has the keyboard focus. On Wayland it is told after its window is shown."""
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        try:
            program = desktop.get_child_at_index(index)
            windows = [program.get_child_at_index(place) for place in range(program.get_child_count())]
            if any(window.get_state_set().contains(Atspi.StateType.ACTIVE) for window in windows if window):
                return True
        except (AttributeError, GLib.GError):
            pass  # A program that has ended and is still listed.
    return False


def key(*names):
    """Presses keys or combinations of keys (such as "ctrl+w") in the active window."""
    if wayland.HERE:
        wait(_some_window_is_active)
        for name in names:
            wayland.hands.strike(name)
    else:
        subprocess.run(["xdotool", "key", *names], check=True)


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
    """A running process that another one has started, found by the path of its program."""

    class _Process:
        def __init__(self, pid):
            self.pid = pid

        def kill(self):
            try:
                os.kill(self.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass

        def poll(self):
            return None if is_running(self.pid) else "a code that its parent knows"

        def wait(self):
            wait(lambda: not is_running(self.pid))

    def __init__(self, program):  # pylint: disable=super-init-not-called
        self.home = None
        self._own_home = False
        self.process = self._Process(wait(lambda: processes_of(program))[0])
