"""A reader that is unplugged and plugged in again, and what readers report of their cards. Usage: test_reader_unplugged.py
STAGE DRIVER, in a network of its own"""

import os
import sys
import tempfile
import time
import unittest

from pcsc import MODEL, DriverReader, PcscService
from service import CardService
from waiting import wait_until

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes"))
from unplugreader import COMMUNICATION_ERROR, TIMED_OUT, UnplugReader  # noqa: E402
from virtualcard import VirtualCard  # noqa: E402

STAGE, DRIVER = sys.argv.pop(1), os.path.abspath(sys.argv.pop(1))
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
CARD_ABSENT, READER_FAULT, CARD_CHANGED, CARD_MUTE = 11, 13, 15, 25


class ReaderUnplugged(unittest.TestCase):
    def setUp(self):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        device = os.path.join(folder, "reader")
        self.reader = self.enterContext(UnplugReader(device))
        self.pcsc = self.enterContext(PcscService(DriverReader(DRIVER, device)))
        self.service = self.enterContext(CardService(STAGE, **self.pcsc.environment()))
        wait_until(self.service.readers, what="the reader")
        self.assertTrue(self.service.bind())
        self.card = VirtualCard.specimen(SPECIMEN)
        self.reader.insert(self.card)
        self.document = self.service.read()
        self.assertIn("<nomUsuel>SPECIMEN</nomUsuel>", self.document)

    def read_again(self):
        """Reads until a read succeeds: the PC/SC service needs a moment to notice the change."""
        return wait_until(lambda: self.service.read() == self.document, what="a good read")

    def test_a_reader_with_one_slot_is_one_reader(self):
        self.assertEqual(self.service.readers(), [MODEL])

    def test_a_card_that_comes_just_after_the_request_is_waited_for(self):
        self.reader.remove()
        self.assertEqual(self.service.read(), CARD_ABSENT)
        self.reader.looked.clear()
        self.assertTrue(self.reader.looked.wait(5))
        # PC/SC is about to check the reader.
        time.sleep(0.25)
        self.service.send("vitale_read")
        time.sleep(0.05)
        self.reader.insert(self.card)
        self.assertEqual(self.service.receive()["Status"], "success")

    def test_an_unplugged_reader_is_a_reader_fault(self):
        self.reader.unplug()
        self.assertEqual(self.service.read(), READER_FAULT)
        self.assertIn("lecteur", self.service.log())
        self.assertEqual(self.service.read(), READER_FAULT)

    def test_a_reader_that_is_unplugged_during_a_read_is_a_reader_fault(self):
        for number in (1, 2, 9, self.reader.commands):
            with self.subTest(number=number):
                self.reader.before = {number: self.reader.unplug}
                self.reader.insert(self.card)
                self.assertEqual(self.service.read(), READER_FAULT)
                self.reader.before = {}
                self.reader.plug()
                self.read_again()

    def test_a_reader_that_is_plugged_in_again_reads(self):
        for _ in range(3):
            self.reader.unplug()
            self.assertEqual(self.service.read(), READER_FAULT)
            self.reader.plug()
            self.read_again()

    def test_a_card_that_leaves_is_told_as_an_error_of_the_line(self):
        def leave():
            self.reader.remove()
            return COMMUNICATION_ERROR
        for number, result in ((1, CARD_ABSENT), (2, CARD_CHANGED), (9, CARD_CHANGED)):
            with self.subTest(number=number):
                self.reader.before = {number: leave}
                self.reader.insert(self.card)
                self.assertEqual(self.service.read(), result)
                self.reader.before = {}
                self.reader.insert(self.card)
                self.read_again()

    def test_a_card_that_falls_silent_under_a_reader_that_notices_is_not_read(self):
        self.reader.before = {9: TIMED_OUT}
        self.reader.insert(self.card)
        self.assertEqual(self.service.read(), CARD_CHANGED)
        self.reader.before = {}
        self.read_again()

    def test_a_card_that_does_not_answer_power_is_mute(self):
        self.reader.remove()
        self.assertEqual(self.service.read(), CARD_ABSENT)
        self.reader.insert(VirtualCard({}, atr=b""))
        self.assertEqual(self.service.read(), CARD_MUTE)
        self.reader.remove()
        # PC/SC notices the removal later; the card was mute before.
        wait_until(lambda: self.service.read() == CARD_ABSENT, what="an empty reader")
        self.reader.insert(self.card)
        self.assertEqual(self.service.read(), self.document)


if __name__ == "__main__":
    unittest.main()
