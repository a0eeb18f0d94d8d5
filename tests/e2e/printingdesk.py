"""The application with the specimen card, for tests of printing. Their first argument is the stage."""

import os
import sys

from desktop import Application, Atspi, key, wait
from windows import is_in_front

STAGE = sys.argv[1]
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
DIALOG = "Imprimer l’attestation – SPECIMEN Hélène"
VIEWER = "Hélène SPECIMEN"


def is_focused(node):
    return node.get_state_set().contains(Atspi.StateType.FOCUSED)


def key_in(title, name):
    """Presses a key when the window has the focus."""
    wait(lambda: is_in_front(title))
    key(name)


class Desk(Application):
    """The application with the specimen card."""

    def __init__(self, environment, home=None):
        super().__init__(PELMORA, "--simulate", SPECIMEN, home=home, environment=environment)

    def open_viewer(self):
        self.find("label", ".*SPECIMEN.*")
        self.press("push button", "Voir")
        return self.find("frame", VIEWER)

    def in_dialog(self, role, name, showing=True):
        return self.find_inside(("dialog", DIALOG), role, name, showing)

    def focus_printers(self, chosen):
        self.in_dialog("combo box", chosen)
        key_in(DIALOG, "alt+m")
        wait(lambda: is_focused(self.in_dialog("combo box", chosen)))

    def choose_below(self, chosen):
        """Chooses the printer after the chosen one."""
        self.focus_printers(chosen)
        key("Down")

    def press_in_dialog(self, name):
        self.press_inside(("dialog", DIALOG), name)
