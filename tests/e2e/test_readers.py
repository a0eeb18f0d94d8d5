"""The card service with readers, through a real PC/SC service. Usage: test_readers.py STAGE, in a network of its own"""

import contextlib
import os
import sys
import threading
import time
import unittest
import xml.etree.ElementTree as ElementTree

from pcsc import MODEL, OtherProgram, PcscService, Reader
from service import CardService
from waiting import wait_until

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes"))
import cardlayout  # noqa: E402
from virtualcard import BLOCK_CARD, END_REACHED, NO_CARD_AT_ALL, UNPOWERABLE, VirtualCard, saying  # noqa: E402

STAGE = sys.argv.pop(1)
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")

UNUSABLE, CARD_ABSENT, READER_FAULT, CARD_CHANGED, READ_ERROR, CARD_MUTE = 0, 11, 13, 15, 17, 25
# PC/SC's name of the only reader that most tests have.
SYSTEM_NAME = MODEL + " 00 00"
OTHER = "Autre lecteur d’essai"


def tree(xml):
    """A document's elements and texts, without its formatting."""
    def content(element):
        children = [content(child) for child in element]
        return element.tag, children or (element.text or "")
    return content(ElementTree.fromstring(xml))


with open(SPECIMEN, encoding="utf-8") as specimen:
    SPECIMEN_XML = specimen.read()
OTHER_XML = SPECIMEN_XML.replace("12345<", "99999<").replace("SPECIMEN", "AUTRE")


class ReaderTest(unittest.TestCase):
    """A PC/SC service with readers. Each test has its own service: a service notices the removal of a card late, and
    would report a card of one test in the next test."""

    readers = ()
    environment = {}  # of the PC/SC service

    def setUp(self):
        self.pcsc = self.enterContext(PcscService(*self.readers, **self.environment))

    def start(self, **environment):
        return self.enterContext(CardService(STAGE, **self.pcsc.environment(), **environment))

    def started(self, *chosen):
        service = self.start()
        self.assertTrue(service.bind(*chosen))
        return service

    def inserted(self, card, reader=None):
        card.insert((reader or self.readers[0]).port)
        self.addCleanup(card.remove)
        return card

    def specimen(self, **options):
        return self.inserted(VirtualCard.specimen(SPECIMEN, **options))


class OneReader(ReaderTest):
    readers = (Reader(),)

    def setUp(self):
        super().setUp()
        self.service = self.started()

    def assert_result(self, result, *words):
        """The next read has this result, and the log has one line with the reason."""
        before = len(self.service.log())
        self.assertEqual(self.service.read(), result)
        told = self.service.log()[before:]
        self.assertEqual(told.count("\n"), 1, told)
        for word in (MODEL, *words):
            self.assertIn(word, told)

    @contextlib.contextmanager
    def alone(self, card):
        """The card in the reader, and the reader empty before and after."""
        with card:
            card.insert(self.readers[0].port)
            yield
        wait_until(lambda: self.service.read() == CARD_ABSENT, what="an empty reader")

    def test_each_slot_is_a_reader_of_its_own(self):
        self.assertEqual(self.service.readers(), [MODEL, MODEL + " (2)"])

    def test_the_mode_that_wants_an_installed_library_only_is_refused(self):
        self.assertEqual(self.service.ask("init", Mode="1"), {"Status": "error"})
        self.assertEqual(self.service.ask("init", Mode="2"), {"Status": "success", "Embedded": "true"})

    def test_a_reader_that_is_not_there_cannot_be_chosen(self):
        self.assertFalse(self.service.bind("Alcor AU9540", MODEL))
        self.assertFalse(self.service.bind(MODEL, "Alcor AU9540"))
        self.assertFalse(self.service.bind(SYSTEM_NAME, MODEL))

    def test_the_whole_card_is_read(self):
        self.specimen()
        reply = self.service.ask("vitale_read")
        self.assertEqual(tree(reply["Vitale"]), tree(SPECIMEN_XML))
        self.assertEqual(reply["FundCodeLibelle"], "Régime général")
        self.assertEqual(self.service.log(), "")

    def test_cards_may_speak_in_their_own_way(self):
        for options in ({"atr": BLOCK_CARD}, {"corrects_lengths": True}, {"end_status": END_REACHED}, {"delay": 0.03}):
            with self.subTest(**options), self.alone(VirtualCard.specimen(SPECIMEN, **options)):
                self.assertEqual(tree(self.service.read()), tree(SPECIMEN_XML))

    def test_without_a_card_the_reader_is_empty(self):
        self.assert_result(CARD_ABSENT, "aucune carte")

    def test_a_card_that_has_just_left_is_not_in_the_reader(self):
        card = self.specimen()
        self.assertEqual(tree(self.service.read()), tree(SPECIMEN_XML))
        card.remove()
        self.assert_result(CARD_ABSENT, "aucune carte")

    def test_a_card_that_comes_right_after_another_is_read(self):
        with self.specimen():
            self.assertEqual(tree(self.service.read()), tree(SPECIMEN_XML))
        # Faster than PC/SC checks the reader: it does not notice the change.
        with VirtualCard(cardlayout.specimen_files(OTHER_XML)) as other:
            other.slip_in(self.readers[0].port)
            self.assertEqual(tree(self.service.read_soon()), tree(OTHER_XML))

    def test_a_card_that_does_not_answer_power_is_mute(self):
        self.specimen(atr=UNPOWERABLE)
        self.assert_result(CARD_MUTE, "muette")

    def test_what_is_no_chip_card_is_no_card(self):
        self.specimen(atr=NO_CARD_AT_ALL)
        self.assert_result(CARD_ABSENT, "pas une carte")

    def test_a_card_of_another_kind_cannot_be_read(self):
        self.inserted(VirtualCard({bytes.fromhex("A0000000421010"): {b"\x00\x01": b"bank"}}))
        self.assert_result(READ_ERROR, "aucune sorte connue")

    def test_a_file_that_is_refused_makes_a_read_error(self):
        for application, file in (cardlayout.SPECIMEN_SERIAL, cardlayout.SPECIMEN_PERSONS,
                                  cardlayout.SPECIMEN_COVERAGE):
            card = VirtualCard.specimen(SPECIMEN)
            card.files[application][file] = 0x6982
            with self.subTest(file=file), self.alone(card):
                self.assert_result(READ_ERROR, "refuse")

    def test_a_file_that_may_lack_is_done_without(self):
        card = VirtualCard.specimen(SPECIMEN)
        application, file = cardlayout.SPECIMEN_RIGHTS
        card.files[application][file] = 0x6982
        self.inserted(card)
        document = ElementTree.fromstring(self.service.read())
        self.assertEqual(len(document.findall("listeBenef/T_AsnBeneficiaire")), 3)
        self.assertEqual(document.findall(".//T_AsnPeriode"), [])

    def test_damaged_data_make_a_read_error(self):
        card = VirtualCard.specimen(SPECIMEN)
        application, file = cardlayout.SPECIMEN_PERSONS
        card.files[application][file] = card.files[application][file][:100]
        self.inserted(card)
        self.assert_result(READ_ERROR)
        self.assertNotIn("SPECIMEN", self.service.log())

    def test_answers_against_all_rules_make_a_read_error(self):
        # Answers about the second file: to its selection, to the fetching of that answer, and to its reading.
        for before in ({6: b"\x90"}, {6: b"\x61\x10", 7: b"\x61\x10"}, {8: bytes(300)}):
            card = VirtualCard.specimen(SPECIMEN)
            card.before = {number: saying(answer) for number, answer in before.items()}
            with self.subTest(before=before), self.alone(card):
                self.assert_result(READ_ERROR, "contre toutes les règles")

    def test_a_card_that_tells_too_little_is_refused_with_what_is_missing(self):
        self.inserted(VirtualCard(cardlayout.second_generation_files()))
        self.assert_result(UNUSABLE, "amo/codeRegime", "amo/caisse")
        self.assertNotIn("SPECIMEN", self.service.log())

    def test_a_reader_that_another_program_keeps_is_waited_for_in_vain(self):
        self.specimen()
        self.assertEqual(tree(self.service.read()), tree(SPECIMEN_XML))
        with OtherProgram(self.pcsc, "exclusive", SYSTEM_NAME):
            self.assert_result(READER_FAULT, "un autre programme")
        self.assertEqual(tree(self.service.read()), tree(SPECIMEN_XML))

    def test_a_reader_that_another_program_lets_go_is_used(self):
        self.specimen()
        self.assertEqual(tree(self.service.read()), tree(SPECIMEN_XML))
        with OtherProgram(self.pcsc, "exclusive", SYSTEM_NAME) as other:
            self.service.send("vitale_read")
            time.sleep(0.3)
            other.go_on()
            self.assertEqual(self.service.receive()["Status"], "success")

    def test_another_program_may_finish_what_it_has_begun(self):
        card = self.specimen()
        self.assertEqual(tree(self.service.read()), tree(SPECIMEN_XML))
        count = len(card.commands)
        with OtherProgram(self.pcsc, "transaction", SYSTEM_NAME) as other:
            self.service.send("vitale_read")
            time.sleep(0.3)
            self.assertEqual(len(card.commands), count)
            other.go_on()
            self.assertEqual(self.service.receive()["Status"], "success")

    def test_a_card_that_another_program_resets_is_read(self):
        self.specimen()
        self.assertEqual(tree(self.service.read()), tree(SPECIMEN_XML))
        with OtherProgram(self.pcsc, "reset", SYSTEM_NAME) as other:
            for _ in range(3):
                other.go_on()
                self.assertEqual(tree(self.service.read()), tree(SPECIMEN_XML))

    def test_a_reset_has_to_wait_for_the_end_of_a_read(self):
        card = VirtualCard.specimen(SPECIMEN)
        reached, gone_on = threading.Event(), threading.Event()

        def let_the_other_try(_stay):
            reached.set()
            gone_on.wait(0.5)

        self.inserted(card)
        self.assertEqual(tree(self.service.read()), tree(SPECIMEN_XML))
        card.commands.clear()
        card.before = {8: let_the_other_try}
        with OtherProgram(self.pcsc, "reset", SYSTEM_NAME) as other:
            self.service.send("vitale_read")
            self.assertTrue(reached.wait(10))
            other.go_on()
            gone_on.set()
            self.assertEqual(self.service.receive()["Status"], "success")

    def test_the_library_names_itself_and_its_maps(self):
        document = ElementTree.fromstring(self.service.ask("informations")["Informations"])
        self.assertIn("PC/SC", document.findtext("apiLecVitale/version"))
        self.assertIn("Carte fictive", document.findtext("apiLecVitale/tableLibVitale"))

    def test_a_read_comes_after_an_init_that_went_well(self):
        self.specimen()
        self.assertEqual(self.service.ask("init", Mode="1")["Status"], "error")
        self.assertEqual(self.service.ask("vitale_read"), {"Status": "error"})


class TwoReaders(ReaderTest):
    readers = (Reader(OTHER), Reader())

    def test_each_reader_gives_its_own_card(self):
        service = self.started(MODEL, OTHER)
        self.assertEqual(service.readers(), [OTHER, OTHER + " (2)", MODEL, MODEL + " (2)"])
        other = VirtualCard(cardlayout.specimen_files(OTHER_XML))
        self.inserted(other, self.readers[0])
        self.assertEqual(service.read(), CARD_ABSENT)
        self.inserted(VirtualCard.specimen(SPECIMEN), self.readers[1])
        self.assertEqual(tree(service.read()), tree(SPECIMEN_XML))
        self.assertTrue(service.bind(OTHER, MODEL))
        self.assertEqual(tree(service.read()), tree(OTHER_XML))


class LongNames(ReaderTest):
    readers = (Reader(),)

    environment = {"PCSCLITE_FILTER_EXTEND_READER_NAMES": " [CCID Interface] (ABC123)"}

    def test_a_reader_is_known_by_its_model_all_the_same(self):
        service = self.started()
        self.assertEqual(service.readers(), [MODEL, MODEL + " (2)"])
        self.specimen()
        self.assertEqual(tree(service.read()), tree(SPECIMEN_XML))


class WithoutTheService(ReaderTest):
    readers = (Reader(),)

    def test_there_are_no_readers_and_the_log_tells_what_to_do(self):
        self.pcsc.stop()
        service = self.start()
        self.assertEqual(service.ask("init", Mode="2"), {"Status": "success", "Embedded": "true"})
        reply = service.ask("readers_list")
        self.assertEqual((reply["Status"], reply["Readers"]), ("success", []))
        self.assertIn("pcscd", service.log())
        self.pcsc.start()
        self.assertEqual(service.readers(), [MODEL, MODEL + " (2)"])

    def test_without_a_reader_the_list_is_empty_and_nothing_is_wrong(self):
        with PcscService() as empty, CardService(STAGE, **empty.environment()) as service:
            self.assertEqual(service.ask("readers_list"), {"Status": "success", "Readers": []})
            self.assertEqual(service.log(), "")

    def test_a_read_after_its_end_is_a_reader_fault(self):
        service = self.started()
        self.pcsc.kill()
        self.assertEqual(service.read(), READER_FAULT)
        self.assertIn("pcscd", service.log())

    def test_its_end_during_a_read_is_a_reader_fault(self):
        card = VirtualCard.specimen(SPECIMEN)

        def kill(_stay):
            self.pcsc.kill()

        card.before = {10: kill}
        service = self.started()
        self.inserted(card)
        self.assertEqual(service.read(), READER_FAULT)
        # The card's thread may not have ended yet.
        card.remove()
        self.pcsc.start()
        card.before = {}
        card.insert(self.readers[0].port)
        self.assertEqual(tree(service.read()), tree(SPECIMEN_XML))

    def test_each_read_after_a_new_start_is_good(self):
        service = self.started()
        descriptors = []
        for number in range(20):
            with self.subTest(number=number), VirtualCard.specimen(SPECIMEN) as card:
                (self.pcsc.stop if number % 2 else self.pcsc.kill)()
                self.pcsc.start()
                card.insert(self.readers[0].port)
                self.assertEqual(tree(service.read()), tree(SPECIMEN_XML))
                descriptors.append(service.descriptors())
        self.assertEqual(descriptors, [descriptors[0]] * len(descriptors))
        self.assertEqual(service.log(), "")


if __name__ == "__main__":
    unittest.main()
