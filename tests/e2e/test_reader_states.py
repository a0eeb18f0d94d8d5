"""The reader states that the card service reports without a request. Usage: test_reader_states.py STAGE DRIVER, in a
network of its own"""

import os
import sys
import tempfile
import time
import unittest

from pcsc import DriverReader, OtherProgram, PcscService, Reader
from service import CardService
from waiting import wait_until

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes"))
from unplugreader import UnplugReader  # noqa: E402
from virtualcard import UNPOWERABLE, VirtualCard  # noqa: E402

STAGE, DRIVER = sys.argv.pop(1), os.path.abspath(sys.argv.pop(1))
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
SYSTEM_NAME = "Feitian SCR301 00 00"
# Seconds. On an idle machine a state takes a few milliseconds; during tests the machine may be busy.
SOON = 1.5
# Seconds without a message, after which none is expected.
QUIET = 0.5
# How often a change is timed, and the longest permitted median in seconds.
ROUNDS, PROMPT = 3, 0.2


class ServiceTest(unittest.TestCase):
    def bound(self, pcsc, *arguments, mode="2"):
        """A service after its first request, which starts the watch."""
        service = self.enterContext(CardService(STAGE, *arguments, **pcsc.environment()))
        self.assertEqual(service.ask("init", Mode=mode)["Status"], "success")
        return service

    def assert_states(self, service, *states):
        for state in states:
            self.assertEqual(service.next_state(), state)
        self.assertIsNone(service.next_state(QUIET))


class States(ServiceTest):
    def setUp(self):
        self.reader = Reader()
        self.pcsc = self.enterContext(PcscService(self.reader))
        self.card = self.enterContext(VirtualCard.specimen(SPECIMEN))

    def test_the_state_comes_once_and_then_at_each_change(self):
        service = self.bound(self.pcsc)
        self.assert_states(service, "empty")
        self.card.insert(self.reader.port)
        self.assert_states(service, "card")
        self.card.remove()
        self.assert_states(service, "empty")

    def test_a_card_that_is_there_is_told_at_the_start_and_reading_it_changes_nothing(self):
        self.card.insert(self.reader.port)
        service = self.bound(self.pcsc)
        self.assert_states(service, "card")
        self.assertTrue(service.bind())
        self.assertEqual(service.next_state(), "card")  # at each "init"
        self.assertIn("SPECIMEN", service.read())
        self.assertIsNone(service.next_state(QUIET))

    def test_another_card_is_told_as_one_that_has_come(self):
        self.card.insert(self.reader.port)
        service = self.bound(self.pcsc)
        self.assert_states(service, "card")
        self.card.remove()
        self.assert_states(service, "empty")
        with VirtualCard.specimen(SPECIMEN) as other:
            other.insert(self.reader.port)
            self.assert_states(service, "card")

    def test_a_service_that_stops_and_starts_is_told(self):
        for end in (self.pcsc.stop, self.pcsc.kill):
            with self.subTest(end=end.__name__):
                service = self.bound(self.pcsc)
                self.assert_states(service, "empty")
                end()
                self.assertEqual(service.next_state(SOON), "no_service")
                started = time.monotonic()
                self.pcsc.start()
                # Until its readers are ready, it reports that there is none.
                states = [service.next_state(SOON)]
                while states[-1] != "empty":
                    states.append(service.next_state(SOON))
                self.assertIn(states, (["empty"], ["no_reader", "empty"]))
                self.assertLess(time.monotonic() - started, SOON)
                self.card.insert(self.reader.port)
                self.assertEqual(service.next_state(), "card")
                self.card.remove()
                self.assertEqual(service.next_state(), "empty")

    def test_without_a_service_that_is_told_until_one_starts(self):
        self.pcsc.stop()
        service = self.bound(self.pcsc)
        self.assert_states(service, "no_service")
        self.pcsc.start()
        self.assertIn(service.next_state(SOON), ("no_reader", "empty"))

    def test_the_service_ends_while_it_watches(self):
        service = self.bound(self.pcsc)
        self.assert_states(service, "empty")
        started = time.monotonic()
        self.assertEqual(service.finish(), 0)
        self.assertLess(time.monotonic() - started, 1)
        self.assertEqual(service.log(), "")

    def test_the_service_ends_while_there_is_no_service_to_watch(self):
        self.pcsc.stop()
        service = self.bound(self.pcsc)
        self.assert_states(service, "no_service")
        self.assertEqual(service.finish(), 0)

    def test_a_state_comes_promptly_after_its_event(self):
        """Measured from the moment at which another program was told."""
        service = self.bound(self.pcsc)
        self.assertEqual(service.next_state(), "empty")
        mute = self.enterContext(VirtualCard.specimen(SPECIMEN, atr=UNPOWERABLE))
        delays = []
        with OtherProgram(self.pcsc, "watch", SYSTEM_NAME) as other:
            for card, state_with_card in [(self.card, "card"), (mute, "mute_card")] * ROUNDS:
                for change, line, state in ((lambda: card.insert(self.reader.port), "present", state_with_card),
                                            (card.remove, "empty", "empty")):
                    change()
                    other.expect(line)
                    told = time.monotonic()
                    self.assertEqual(service.next_state(SOON), state)
                    delays.append(time.monotonic() - told)
        print("after the other program:", *(f"{delay * 1000:.1f}" for delay in sorted(delays)), "ms", file=sys.stderr)
        self.assertLess(sorted(delays)[len(delays) // 2], PROMPT)

    def test_the_watch_costs_nothing_while_nothing_happens(self):
        for prepare in (lambda: None, self.pcsc.stop):
            prepare()
            service = self.bound(self.pcsc)
            self.assertIsNotNone(service.next_state())
            # Waits until the watch is idle.
            time.sleep(1.5)
            before = service.processor_time()
            time.sleep(3)
            self.assertLess(service.processor_time() - before, 0.02)


class OtherReaders(ServiceTest):
    def test_readers_of_other_models_are_told_apart_from_none(self):
        with PcscService(Reader("Alcor AU9540")) as pcsc:
            self.assert_states(self.bound(pcsc), "other_reader")
        with PcscService() as pcsc:
            self.assert_states(self.bound(pcsc), "no_reader")

    def test_the_simulated_reader_has_a_card(self):
        with PcscService() as pcsc:
            self.assert_states(self.bound(pcsc, "--simulate", SPECIMEN), "card")


class Unplugged(ServiceTest):
    def test_a_reader_that_is_unplugged_and_plugged_in_again_is_told(self):
        device = os.path.join(self.enterContext(tempfile.TemporaryDirectory()), "reader")
        reader = self.enterContext(UnplugReader(device))
        pcsc = self.enterContext(PcscService(DriverReader(DRIVER, device)))
        service = self.bound(pcsc)
        wait_until(lambda: service.next_state() == "empty", what="the reader")
        for _ in range(3):
            reader.unplug()
            self.assertEqual(service.next_state(), "no_reader")
            reader.plug()
            self.assertEqual(service.next_state(), "empty")
        reader.insert(VirtualCard.specimen(SPECIMEN))
        self.assertEqual(service.next_state(), "card")
        reader.unplug()
        self.assertEqual(service.next_state(), "no_reader")
        reader.remove()
        reader.plug()
        self.assertEqual(service.next_state(), "empty")
        reader.insert(VirtualCard({}, atr=b""))
        self.assertEqual(service.next_state(), "mute_card")
        reader.remove()
        self.assertEqual(service.next_state(), "empty")


if __name__ == "__main__":
    unittest.main()
