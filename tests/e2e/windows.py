"""The window manager's windows, by their titles: for facts that the accessibility tree does not have, and when there is
no accessibility tree. A window that is hidden and shown again may have another number."""

import subprocess

import wayland
from desktop import wait


def _output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout


def _in_state(title, state):
    """The windows with exactly that title that the window manager has in a state: Normal or Iconic."""
    return [window for window in _output("xdotool", "search", "--name", f"^{title}$").split()
            if f"window state: {state}" in _output("xprop", "-id", window, "WM_STATE")]


def shown_windows(title):
    if wayland.HERE:
        return [window["id"] for window in wayland.windows(title) if window["visible"]]
    return _in_state(title, "Normal")


def wait_until_shown(title):
    wait(lambda: shown_windows(title))


def is_in_front(title):
    """Whether it is shown and has the keyboard focus."""
    if wayland.HERE:
        return any(window["focused"] for window in wayland.windows(title))
    return _output("xdotool", "getactivewindow").strip() in shown_windows(title)


def is_iconified(title):
    """Whether it is in the list of windows only."""
    return bool(_in_state(title, "Iconic"))


def is_hidden(title):
    """Whether it is not even in the list of windows."""
    if wayland.HERE:
        return not wayland.windows(title)
    return not shown_windows(title) and not is_iconified(title)


def iconify(title):
    for window in shown_windows(title):
        subprocess.run(["xdotool", "windowminimize", window], check=True)
    wait(lambda: is_iconified(title))


def close(title):
    """What the button in the window's title bar does."""
    if wayland.HERE:
        wayland.close(title)
        return
    for window in shown_windows(title):
        subprocess.run(["wmctrl", "-i", "-c", hex(int(window))], check=True)
