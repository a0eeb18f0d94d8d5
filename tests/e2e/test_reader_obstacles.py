"""Obstacles to a read (readers, other programs, the PC/SC service, cards), and how the card service reports them.
Usage: test_reader_obstacles.py STAGE, in a network of its own"""

import os
import sys
import threading
import time
import unittest

from pcsc import MODEL, OtherProgram, PcscService, Reader
from service import CardService
from waiting import wait_until

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes"))
import cardlayout  # noqa: E402
from virtualcard import BEYOND_THE_END, BLOCK_CARD, END_REACHED, OK, VirtualCard  # noqa: E402

STAGE = sys.argv.pop(1)
with open(os.path.join(STAGE, "share", "pelmora", "specimen.xml"), encoding="utf-8") as specimen:
    SPECIMEN_XML = specimen.read()
CARD_ABSENT, READER_FAULT, READ_ERROR = 11, 13, 17
LONG_NAME = "Feitian Technologies SCR301"


def specimen_card(**options):
    return VirtualCard(cardlayout.specimen_files(SPECIMEN_XML), **options)


class ObstacleTest(unittest.TestCase):
    def started(self, *readers, bound=True):
        self.pcsc = self.enterContext(PcscService(*readers))
        service = self.enterContext(CardService(STAGE, **self.pcsc.environment()))
        self.assertTrue(not bound or service.bind())
        return service

    def inserted(self, card, reader):
        card.insert(reader.port)
        self.addCleanup(card.remove)
        return card

    def assert_read(self, service):
        document = service.read()
        self.assertIsInstance(document, str, service.log())
        self.assertEqual(document.count("<T_AsnBeneficiaire>"), 3)


class Readers(ObstacleTest):
    def test_other_spellings_of_the_model_are_accepted(self):
        for name in ("FEITIAN scr301", "Feitian  SCR301", LONG_NAME):
            with self.subTest(name=name):
                reader = Reader(name)
                service = self.started(reader)
                self.assertEqual(service.readers(), [MODEL, MODEL + " (2)"])
                self.inserted(specimen_card(), reader)
                self.assert_read(service)

    def test_of_two_accepted_readers_the_one_that_holds_a_card_is_read(self):
        first, second = Reader(), Reader(LONG_NAME)
        service = self.started(first, second)
        self.assertEqual(service.read(), CARD_ABSENT)
        with specimen_card() as card:
            card.insert(second.port)
            self.assert_read(service)
        # A card of another kind, as in a professional's reader, counts as an absent card, not as a read error.
        self.inserted(VirtualCard({bytes.fromhex("A0000000421010"): {b"\x00\x01": b"bank"}}), second)
        wait_until(lambda: service.read() == CARD_ABSENT, what="a reader without a health card")
        self.assertEqual(service.read(), CARD_ABSENT)
        self.inserted(specimen_card(), first)
        self.assert_read(service)

    def test_a_read_without_a_chosen_reader_looks_for_the_accepted_one(self):
        reader = Reader()
        service = self.started(reader, bound=False)
        self.inserted(specimen_card(), reader)
        self.assertEqual(service.ask("init", Mode="2")["Status"], "success")
        self.assert_read(service)
        # A refused choice does not prevent reading either.
        self.assertEqual(service.ask("init", Mode="2")["Status"], "success")
        self.assertEqual(service.ask("set_readers", vitale_reader_name="?", cps_reader_name="?")["Status"], "error")
        self.assert_read(service)

    def test_without_an_accepted_reader_such_a_read_is_a_reader_fault(self):
        service = self.started(Reader("Autre lecteur"), bound=False)
        self.assertEqual(service.ask("init", Mode="2")["Status"], "success")
        reply = service.ask("vitale_read")
        self.assertEqual((reply["Status"], reply["Result"]), ("error", READER_FAULT))
        self.assertIn(MODEL, reply["Detail"])


class OtherPrograms(ObstacleTest):
    def setUp(self):
        self.reader = Reader()
        self.service = self.started(self.reader)
        self.inserted(specimen_card(), self.reader)
        self.assert_read(self.service)

    def assert_held(self):
        reply = self.service.ask("vitale_read")
        self.assertEqual((reply["Status"], reply["Result"]), ("error", READER_FAULT))
        self.assertIn("Un autre programme se sert de la carte", reply["Detail"])

    def test_a_program_that_keeps_the_reader_for_itself_is_told_in_words(self):
        with OtherProgram(self.pcsc, "exclusive", MODEL + " 00 00"):
            self.assert_held()
        self.assertIn("un autre programme garde le lecteur", self.service.log())
        self.assert_read(self.service)

    def test_a_program_that_does_not_end_its_transaction_is_told_in_words(self):
        with OtherProgram(self.pcsc, "transaction", MODEL + " 00 00"):
            self.assert_held()
        self.assertIn("lecture abandonnée après 20 s : Un autre programme", self.service.log())


class PcscServiceItself(ObstacleTest):
    def test_that_it_does_not_run_is_told_beside_an_empty_list(self):
        service = self.started(Reader())
        self.pcsc.stop()
        reply = service.ask("readers_list")
        self.assertEqual(reply["Readers"], [])
        self.assertIn("PC/SC", reply["Detail"])
        reply = service.ask("vitale_read")
        self.assertEqual(reply["Result"], READER_FAULT)
        self.assertIn("PC/SC", reply["Detail"])
        self.pcsc.start()
        self.assertNotIn("Detail", service.ask("readers_list"))

    def test_one_that_is_back_within_two_seconds_is_waited_for(self):
        reader = Reader()
        service = self.started(reader)
        self.assertEqual(service.read(), CARD_ABSENT)
        self.pcsc.kill()
        service.send("vitale_read")
        time.sleep(1)
        with specimen_card() as card:
            # Waits for the reader's driver, which the new service loads.
            inserting = threading.Thread(target=lambda: card.insert(reader.port))
            self.pcsc.start()
            inserting.start()
            reply = service.receive()
            inserting.join()
            self.assertIn((reply["Status"], reply.get("Result")), (("success", None), ("error", CARD_ABSENT)))
            self.assert_read(service)

    def test_one_that_stays_away_is_told_after_two_seconds(self):
        service = self.started(Reader())
        self.pcsc.kill()
        start = time.monotonic()
        self.assertEqual(service.read(), READER_FAULT)
        self.assertGreater(time.monotonic() - start, 1.9)
        self.assertLess(time.monotonic() - start, 8)


class Cards(ObstacleTest):
    def setUp(self):
        self.reader = Reader()
        self.service = self.started(self.reader)

    def test_cards_and_readers_may_give_few_bytes_at_a_time(self):
        card = self.inserted(specimen_card(), self.reader)
        for atr in (card.atr, BLOCK_CARD):
            for most in (1, 64, 100, 128, 192, 240, 255):
                for ending in (OK, BEYOND_THE_END, bytes.fromhex("6A82"), bytes.fromhex("6A86"), bytes.fromhex("6A87"),
                               bytes.fromhex("6700"), END_REACHED):
                    with self.subTest(atr=atr, most=most, ending=ending):
                        card.most, card.beyond = max(most, 16) if ending != OK else most, ending
                        self.assert_read(self.service)
        card.tells_size = False
        for ending in (OK, BEYOND_THE_END, END_REACHED):
            card.most, card.beyond = 100, ending
            self.assert_read(self.service)
        self.assertEqual(self.service.log(), "")

    def test_a_file_that_is_not_as_long_as_the_card_says_is_told(self):
        card = self.inserted(specimen_card(), self.reader)
        card.select_file = lambda identifier, select=card.select_file: (
            select(identifier), card.keep_ready(b"\x6F\x04\x80\x02\x00\x05"))[1]
        self.assertEqual(self.service.read(), READ_ERROR)
        self.assertIn("« série » : un fichier de la carte n’a pas la longueur", self.service.log())

    def test_a_card_without_end_is_left(self):
        application, entry = cardlayout.VITALE_APPLICATION, b"\x10\x01"
        files = {number.to_bytes(2, "big"): b"\x04\x01x" for number in range(0x3000, 0x3800)}
        named = [(f"F{index:07}".encode(), entry, number) for index, number in enumerate(files)]
        files[b"\x20\x01"] = cardlayout.pointers({entry: application}, named)
        card = self.inserted(VirtualCard({application: files}), self.reader)
        self.assertEqual(self.service.read(), READ_ERROR)
        self.assertLessEqual(len(card.commands), 2010)
        self.assertIn("plus de travail qu’aucune carte", self.service.log())


if __name__ == "__main__":
    unittest.main()
