"""The window, as a person at the counter sees it. Usage: test_window.py STAGE"""

import os
import subprocess
import sys
import tempfile
import unittest

from desktop import Application, is_running, wait

STAGE = sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")


def colour_shares():
    """How much of the screen each colour covers."""
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "screen.png")
        subprocess.run(["import", "-window", "root", path], check=True)
        return colour_shares_of(path)


def colour_shares_of(path):
    histogram = subprocess.run(["convert", path, "-format", "%c", "histogram:info:-"], capture_output=True, text=True,
                               check=True).stdout
    counts = {}
    for line in histogram.splitlines():
        count, _, rest = line.strip().partition(":")
        counts[rest.split("#")[1][:6]] = int(count)
    total = sum(counts.values())
    return {colour: count / total for colour, count in counts.items()}


class Window(unittest.TestCase):
    def test_the_simulated_card_is_shown_with_its_page(self):
        with Application(PELMORA, "--simulate") as pelmora:
            pelmora.find("frame", "Hélène SPECIMEN")

            def page_is_painted():
                shares = colour_shares()
                # The white page, and the grey of the tables' headers.
                return shares.get("FFFFFF", 0) > 0.2 and shares.get("B3B3B3", 0) > 0.01
            try:
                wait(page_is_painted)
            except AssertionError:
                self.fail(f"exit code {pelmora.process.poll()}, colours {list(colour_shares().items())[:6]}")

    def test_a_card_file_is_shown(self):
        card = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
        with Application(PELMORA, card) as pelmora:
            pelmora.find("frame", "Hélène SPECIMEN")

    def test_without_a_reader_an_alert_says_so(self):
        with Application(PELMORA) as pelmora:
            pelmora.find("label", "Aucun lecteur de carte n'a été trouvé. Vérifiez les branchements.")

    def test_no_card_service_is_left_when_the_application_ends(self):
        with Application(PELMORA, "--simulate") as pelmora:
            pelmora.find("frame", "Hélène SPECIMEN")
            services = pelmora.children()
            self.assertEqual(len(services), 1)
            pelmora.process.kill()
            wait(lambda: not is_running(services[0]))


if __name__ == "__main__":
    unittest.main()
