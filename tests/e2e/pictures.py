"""Takes a picture of each window, with the card of a fictitious patient. Usage: pictures.py STAGE FOLDER SUFFIX

The desktop (X or Wayland), its size, the scale and the size of texts are as the caller has set them. With the suffix "-dark"
the desktop prefers dark windows."""

import os
import subprocess
import sys

import wayland
from desktop import Application, key, wait
from portal import DARK, LIGHT, Portal
from windows import is_in_front, shown_windows, wait_until_shown

STAGE, FOLDER, SUFFIX = sys.argv[1:]
PELMORA = os.path.join(STAGE, "bin", "pelmora")
MAIN = "Pelmora par MORVEL"
PREFERENCES = "Préférences Pelmora"
PANES = {"Configuration": "configuration", "Attestations": "attestations", "Lecture Vitale": "reading",
         "Mise à jour": "updates"}


def picture(title):
    """The window as PNG data. On Wayland it must be in front, because its part of the screen is taken."""
    if wayland.HERE:
        box = wayland.windows(title)[0]["rect"]
        command = ["grim", "-g", f"{box['x']},{box['y']} {box['width']}x{box['height']}", "-"]
    else:
        command = ["import", "-silent", "-window", shown_windows(title)[0], "-strip", "png:-"]
    return subprocess.run(command, capture_output=True, check=True).stdout


def take(title, name, unlike=None):
    """Takes a picture of the window when it no longer changes and differs from the given picture."""
    wait_until_shown(title)
    seen = [None]

    def is_still():
        before, seen[0] = seen[0], picture(title)
        return before == seen[0] != unlike
    wait(is_still)
    with open(os.path.join(FOLDER, f"{name}{SUFFIX}.png"), "wb") as file:
        file.write(seen[0])
    return seen[0]


def take_dialog(title, name):
    take(title, name)
    wait(lambda: is_in_front(title))
    key("Escape")
    wait(lambda: not shown_windows(title))


def main():
    with Portal(DARK if SUFFIX == "-dark" else LIGHT), Application(PELMORA, "--simulate") as pelmora:
        wait(lambda: pelmora.is_enabled("push button", "Voir"))
        empty = take(MAIN, "main-window-empty")
        pelmora.press("push button", "Lire")
        pelmora.find("label", "SPECIMEN.*")
        take(MAIN, "main-window", unlike=empty)
        pelmora.press("push button", "Imprimer")
        take_dialog("Imprimer l’attestation – SPECIMEN Hélène", "print")
        pelmora.choose("Diagnostic…")
        pelmora.find("text", "Diagnostic")
        take_dialog("Diagnostic de la lecture", "diagnosis")
        pelmora.choose("À propos de Pelmora")
        take_dialog("À propos de Pelmora", "about")
        pelmora.press("push button", "Voir")
        take("Hélène SPECIMEN", "viewer")
        pelmora.choose("Préférences…")
        for pane, name in PANES.items():
            pelmora.press("check box", pane)
            take(PREFERENCES, f"preferences-{name}")


if __name__ == "__main__":
    main()
