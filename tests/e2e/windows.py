"""Windows as the window manager sees them, by their titles: for what the accessibility tree does not tell, and where there
is none. A window that is hidden and comes back may be another one to the window manager."""

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
    """Whether it is on the screen, and where the keyboard goes."""
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
