"""Windows are dark where the desktop prefers it, also when it changes. Usage: test_colors.py STAGE"""

import os
import subprocess
import sys
import unittest

from desktop import Application, wait
from portal import DARK, LIGHT, Portal
from windows import wait_until_shown

STAGE = sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
TITLE = "Pelmora par MORVEL"


def brightness(pelmora):
    """How bright the window is between its tiles, from 0 to 255."""
    tile = pelmora.find("push button", "Lire").get_component_iface().get_extents(0)
    data = subprocess.run(["import", "-window", "root", "-crop", f"4x4+{tile.x - 8}+{tile.y + 20}", "+repage", "-depth",
                           "8", "gray:-"], capture_output=True, check=True).stdout
    return sum(data) / len(data)


class Colors(unittest.TestCase):
    def test_windows_follow_the_preference_at_the_start_and_later(self):
        for first, second in ((DARK, LIGHT), (LIGHT, DARK)):
            with self.subTest(first), Portal(first) as portal, Application(PELMORA, "--simulate") as pelmora:
                wait_until_shown(TITLE)
                wait(lambda: pelmora.is_enabled("push button", "Voir"))
                wait(lambda start=first: (brightness(pelmora) < 100) == (start == DARK))
                portal.prefer(second)
                wait(lambda later=second: (brightness(pelmora) < 100) == (later == DARK))

    def test_without_a_portal_windows_are_as_the_desktop_draws_them(self):
        with Application(PELMORA, "--simulate") as pelmora:
            wait_until_shown(TITLE)
            wait(lambda: pelmora.is_enabled("push button", "Voir"))
            self.assertGreater(brightness(pelmora), 150)


if __name__ == "__main__":
    unittest.main()
