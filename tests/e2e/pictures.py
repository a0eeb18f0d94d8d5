"""Takes a picture of each window, with the card of a fictitious patient. Usage: pictures.py STAGE FOLDER SUFFIX

The desktop's size, Qt's scale and its size of texts are as the caller has set them. With the suffix "-dark" the desktop
prefers dark windows."""

import os
import subprocess
import sys

from desktop import Application, wait
from portal import DARK, LIGHT, Portal
from windows import shown_windows, wait_until_shown

STAGE, FOLDER, SUFFIX = sys.argv[1:]
PELMORA = os.path.join(STAGE, "bin", "pelmora")
MAIN = "Pelmora par MORVEL"
PREFERENCES = "Préférences Pelmora"
PANES = {"Configuration": "configuration", "Attestations": "attestations", "Lecture Vitale": "reading",
         "Mise à jour": "updates"}


def pixels(window):
    return subprocess.run(["import", "-silent", "-window", window, "rgb:-"], capture_output=True, check=True).stdout


def take(title, name):
    """A picture of the window when nothing changes in it any more."""
    wait_until_shown(title)
    window = shown_windows(title)[0]
    seen = [None]

    def is_still():
        before, seen[0] = seen[0], pixels(window)
        return before == seen[0]
    wait(is_still)
    subprocess.run(["import", "-silent", "-window", window, "-strip",
                    os.path.join(FOLDER, f"{name}{SUFFIX}.png")], check=True)


def main():
    with Portal(DARK if SUFFIX == "-dark" else LIGHT), Application(PELMORA, "--simulate") as pelmora:
        wait(lambda: pelmora.is_enabled("push button", "Voir"))
        take(MAIN, "main-window-empty")
        pelmora.press("push button", "Lire")
        pelmora.find("label", "SPECIMEN.*")
        take(MAIN, "main-window")
        pelmora.press("push button", "Voir")
        take("Hélène SPECIMEN", "viewer")
        pelmora.choose("Préférences…")
        for pane, name in PANES.items():
            pelmora.press("check box", pane)
            take(PREFERENCES, f"preferences-{name}")


if __name__ == "__main__":
    main()
