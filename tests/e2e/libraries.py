"""Which libraries a program loads."""

import os

WINDOW_SYSTEM = ("libQt6Gui", "libQt6Widgets", "libfontconfig", "libX11", "libxcb", "libEGL", "libGL")


def loaded(log):
    """The names of the loaded libraries, at the start and later, from the dynamic linker's log (LD_DEBUG=files)."""
    return {os.path.basename(line.rpartition(" ")[2]) for line in log.splitlines() if "calling init: " in line}


def of_a_window_system(names):
    return {name for name in names if name.startswith(WINDOW_SYSTEM)}
