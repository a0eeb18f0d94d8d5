"""A Wayland desktop's windows, keyboard and mouse, through its compositor (sway)."""

import array
import atexit
import json
import os
import socket
import struct
import subprocess
import tempfile
import time

# Whether this is a Wayland desktop.
HERE = "WAYLAND_DISPLAY" in os.environ

# As in linux/input-event-codes.h.
_BUTTON_LEFT = 0x110
_MODIFIERS = {"shift": (42, 1), "ctrl": (29, 4), "alt": (56, 8)}  # with their masks
_KEYS = {"Escape": 1, "minus": 12, "equal": 13, "BackSpace": 14, "Tab": 15, "Return": 28, "comma": 51, "space": 57,
         "Home": 102, "Up": 103, "Prior": 104, "Left": 105, "Right": 106, "End": 107, "Down": 108, "Next": 109,
         "Delete": 111}
for _row, _first in (("1234567890", 2), ("qwertyuiop", 16), ("asdfghjkl", 30), ("zxcvbnm", 44)):
    _KEYS.update({_letter: _first + _place for _place, _letter in enumerate(_row)})
_KEYS.update({f"F{_number}": 58 + _number for _number in range(1, 11)})
_KEYMAP = b"""xkb_keymap {
    xkb_keycodes { include "evdev" };
    xkb_types { include "complete" };
    xkb_compat { include "complete" };
    xkb_symbols { include "pc+us+inet(evdev)" };
};\0"""


def _ask(kind):
    answer = subprocess.run(["swaymsg", "--raw", "--type", kind], capture_output=True, check=True)
    return json.loads(answer.stdout)


def _windows(node):
    if "app_id" in node:
        yield node
    for child in node.get("nodes", []) + node.get("floating_nodes", []):
        yield from _windows(child)


def windows(title):
    """The windows with exactly that title, as the compositor describes them: a list of dictionaries."""
    return [window for window in _windows(_ask("get_tree")) if window["name"] == title]


def close(title):
    """What the button in the window's title bar would do."""
    for window in windows(title):
        subprocess.run(["swaymsg", "--quiet", f"[con_id={window['id']}]", "kill"], check=True)


class _Connection:
    """A client of the compositor that sends requests in the protocol's own form."""

    def __init__(self):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.connect(os.environ["WAYLAND_DISPLAY"])
        self._last_object = 1  # the display
        self._registry = self.new_object()
        self.send(1, 1, struct.pack("=I", self._registry))
        self._globals = {}
        for target, opcode, arguments in self.finish():
            if (target, opcode) == (self._registry, 0):
                name, length = struct.unpack_from("=II", arguments)
                self._globals[arguments[8:8 + length - 1]] = name

    def close(self):
        self._socket.close()

    def bind(self, interface):
        """The object that the compositor offers under that name."""
        made = self.new_object()
        text = interface + b"\0"
        self.send(self._registry, 0, struct.pack("=II", self._globals[interface], len(text)) + text
                  + b"\0" * (-len(text) % 4) + struct.pack("=II", 1, made))
        return made

    def new_object(self):
        self._last_object += 1
        return self._last_object

    def send(self, target, opcode, arguments=b"", descriptors=()):
        message = struct.pack("=II", target, (len(arguments) + 8) << 16 | opcode) + arguments
        rights = [(socket.SOL_SOCKET, socket.SCM_RIGHTS, array.array("i", descriptors))] if descriptors else []
        self._socket.sendmsg([message], rights)

    def finish(self):
        """Waits until the compositor has handled all requests. Returns the events until then."""
        callback = self.new_object()
        self.send(1, 0, struct.pack("=I", callback))
        events = []
        while not events or events[-1][:2] != (callback, 0):
            target, word = struct.unpack("=II", self._receive(8))
            event = target, word & 0xffff, self._receive((word >> 16) - 8)
            if event[:2] == (1, 0):
                raise RuntimeError(f"the compositor refused what it was sent: {event[2]!r}")
            events.append(event)
        return events

    def _receive(self, size):
        data = b""
        while len(data) < size:
            part = self._socket.recv(size - len(data))
            if not part:
                raise RuntimeError("the compositor has ended")
            data += part
        return data


class Hands:
    """A keyboard and a mouse. Positions are in pixels of the screen."""

    def __init__(self):
        self._compositor = _Connection()
        seat = self._compositor.bind(b"wl_seat")
        self._keyboard = self._device(b"zwp_virtual_keyboard_manager_v1", seat)
        with tempfile.TemporaryFile() as file:
            file.write(_KEYMAP)
            file.flush()
            self._compositor.send(self._keyboard, 0, struct.pack("=II", 1, len(_KEYMAP)), [file.fileno()])
        self._mouse = self._device(b"zwlr_virtual_pointer_manager_v1", seat)
        self._compositor.finish()
        screen = _ask("get_outputs")[0]["rect"]
        self._screen = screen["width"], screen["height"]

    def close(self):
        self._compositor.close()

    def strike(self, name):
        """Presses a key or a combination of keys (as "ctrl+w") in the active window."""
        *held, struck = name.split("+")
        self._hold(held)
        for pressed in (1, 0):
            self._key(_KEYS[struck], pressed)
        self._let_go(held)
        self._compositor.finish()

    def move(self, x, y):
        self._mouse_does(1, "IIII", x, y, *self._screen)

    def click(self, *held):
        """Presses and releases the mouse's left button, with keys held down."""
        self._hold(held)
        for pressed in (1, 0):
            self._mouse_does(2, "II", _BUTTON_LEFT, pressed)
        self._let_go(held)
        self._compositor.finish()

    def turn_wheel(self, notches):
        """Turns the wheel, down where the number is positive."""
        step = 1 if notches > 0 else -1
        for _ in range(abs(notches)):
            self._compositor.send(self._mouse, 5, struct.pack("=I", 0))
            self._mouse_does(7, "Iii", 0, step * 15 * 256, step)

    def _device(self, interface, seat):
        manager = self._compositor.bind(interface)
        made = self._compositor.new_object()
        self._compositor.send(manager, 0, struct.pack("=II", seat, made))
        return made

    def _hold(self, modifiers):
        mask = 0
        for modifier in modifiers:
            code, bit = _MODIFIERS[modifier]
            mask |= bit
            self._key(code, 1)
        self._compositor.send(self._keyboard, 2, struct.pack("=IIII", mask, 0, 0, 0))

    def _let_go(self, modifiers):
        for modifier in reversed(modifiers):
            self._key(_MODIFIERS[modifier][0], 0)
        self._compositor.send(self._keyboard, 2, struct.pack("=IIII", 0, 0, 0, 0))

    def _key(self, code, pressed):
        self._compositor.send(self._keyboard, 1, struct.pack("=III", _now(), code, pressed))

    def _mouse_does(self, opcode, form, *arguments):
        self._compositor.send(self._mouse, opcode, struct.pack("=I" + form, _now(), *arguments))
        self._compositor.send(self._mouse, 4)
        self._compositor.finish()


def _now():
    return int(time.monotonic() * 1000) & 0xffffffff


# Made before any program starts: a program looks for a keyboard at its start, and would otherwise miss the first key.
if HERE:
    hands = Hands()
    atexit.register(hands.close)
