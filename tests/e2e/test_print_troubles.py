"""Printers and print servers that fail while a window prints. Usage: test_print_troubles.py STAGE"""

import contextlib
import sys
import time
import unittest

from desktop import wait
from printingdesk import DIALOG, VIEWER, Desk, is_focused, key_in
from printserver import PrintServer
from windows import close

SEARCH = "Recherche des imprimantes…"


@contextlib.contextmanager
def troubled_desk():
    """A print server with one queue, for tests with faults, and the application with its viewer."""
    with PrintServer() as server:
        server.add_queue("queue")
        server.set_default("queue")
        with Desk(server.environment()) as desk:
            desk.open_viewer()
            yield server, desk


class PrintTroubles(unittest.TestCase):
    def test_the_application_ends_while_the_print_server_stalls(self):
        with troubled_desk() as (silent, desk):
            silent.stall()
            key_in(VIEWER, "ctrl+p")
            start = time.monotonic()
            self.assertEqual(desk.terminate(), 0)
            self.assertLess(time.monotonic() - start, 3)

    def test_a_printer_that_goes_under_the_open_dialog_is_told(self):
        with troubled_desk() as (server, desk):
            key_in(VIEWER, "ctrl+p")
            desk.in_dialog("combo box", "queue")
            server.run("lpadmin", "-x", "queue")
            desk.press_in_dialog("Imprimer")
            desk.find("label", "L’imprimante « queue » n’existe plus.")
            desk.press("push button", "OK")
            desk.wait_until_gone("dialog", DIALOG)

    def test_a_print_server_that_goes_under_the_open_dialog_is_told(self):
        with troubled_desk() as (brief, desk):
            key_in(VIEWER, "ctrl+p")
            desk.in_dialog("combo box", "queue")
            brief.stop()
            desk.press_in_dialog("Imprimer")
            desk.find("label", "Le serveur d’impression n’est pas joignable.")

    def test_a_printer_that_refuses_is_told(self):
        with troubled_desk() as (server, desk):
            server.run("cupsreject", "queue")
            key_in(VIEWER, "ctrl+p")
            desk.press_in_dialog("Imprimer")
            desk.find("label", "L’imprimante « queue » n’accepte plus de documents pour l’instant.")
            desk.press("push button", "OK")

    def test_a_print_server_that_stalls_holds_up_no_window(self):
        with troubled_desk() as (silent, desk):
            silent.stall()
            key_in(VIEWER, "ctrl+p")
            # The windows answer while the print server does not.
            start = time.monotonic()
            desk.find("label", SEARCH)
            self.assertLess(time.monotonic() - start, 2)
            self.assertIsNone(desk.find_now("alert", ".*"))
            desk.find("label", "Le serveur d’impression ne répond pas. .*")
            self.assertIsNone(desk.find_now("label", SEARCH))
            desk.press("push button", "OK")
            desk.in_dialog("combo box", r"Imprimer dans un fichier \(PDF\)")
            desk.wait_until_gone("push button", "OK")
            key_in(DIALOG, "Escape")
            desk.wait_until_gone("dialog", DIALOG)
            # The next print finds the server that answers again.
            silent.resume()
            key_in(VIEWER, "ctrl+p")
            desk.in_dialog("combo box", "queue")
            desk.press_in_dialog("Imprimer")
            silent.wait_for_jobs("queue")

    def test_a_search_for_printers_can_be_stopped(self):
        with troubled_desk() as (silent, desk):
            silent.stall()
            key_in(VIEWER, "ctrl+p")
            desk.press("push button", "Annuler")
            desk.wait_until_gone("label", SEARCH)
            silent.resume()
            # The next search starts again, and is the only one.
            key_in(VIEWER, "ctrl+p")
            desk.press_in_dialog("Imprimer")
            silent.wait_for_jobs("queue")
            desk.wait_until_gone("dialog", DIALOG)
            self.assertEqual(len(silent.jobs("queue")), 1)

    def test_a_print_server_that_stalls_under_the_open_dialog_is_told(self):
        with troubled_desk() as (silent, desk):
            key_in(VIEWER, "ctrl+p")
            desk.focus_printers("queue")
            silent.stall()
            desk.press_in_dialog("Imprimer")
            desk.find("label", "Le serveur d’impression ne répond pas.")
            desk.press("push button", "OK")
            # The focus is where it was.
            wait(lambda: is_focused(desk.in_dialog("combo box", "queue")))

    def test_a_dialog_that_is_closed_while_the_print_server_stalls_prints_nothing(self):
        with troubled_desk() as (slow, desk):
            key_in(VIEWER, "ctrl+p")
            desk.in_dialog("combo box", "queue")
            slow.stall()
            desk.press_in_dialog("Imprimer")
            close(DIALOG)
            desk.wait_until_gone("dialog", DIALOG)
            slow.resume()
            key_in(VIEWER, "ctrl+p")
            desk.press_in_dialog("Imprimer")
            slow.wait_for_jobs("queue")
            desk.wait_until_gone("dialog", DIALOG)
            self.assertEqual(len(slow.jobs("queue")), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
