"""A card that is removed or exchanged at each command of a read. Usage: test_card_removal.py STAGE, in a network
of its own"""

import os
import sys
import unittest
from concurrent.futures import ThreadPoolExecutor

from pcsc import Reader
from service import started

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes"))
from cardlayout import specimen_files  # noqa: E402
from virtualcard import VirtualCard, remove, swap_for  # noqa: E402

STAGE = sys.argv.pop(1)
CARD_ABSENT, CARD_CHANGED = 11, 15
# Parallel rounds: most of a round is waiting for PC/SC to check the reader.
WORKERS = 8


def card_xml(serial, name, number):
    """The XML of a card with one person; every field differs between two cards."""
    fields = {"nomUsuel": name, "nomPatronymique": name + " NÉE", "prenomUsuel": name + " PRÉNOM",
              "rangDeNaissance": number, "nir": f"28505751161238{number}"}
    ident = "".join(f"<{key}>{value}</{key}>" for key, value in fields.items())
    return (f"<T_AsnDonneesVitale><tech><numSerie>{serial}</numSerie></tech><listeBenef><T_AsnBeneficiaire><ident>{ident}"
            f"<naissance><date>0{number}051985</date><dateEnCarte>85050{number}</dateEnCarte></naissance>"
            f"<listePeriodesDroits><T_AsnPeriode><debut>0{number}012025</debut><fin>0{number}122025</fin></T_AsnPeriode>"
            f"</listePeriodesDroits></ident><amo><qualBenef>0</qualBenef><codeRegime>0{number}</codeRegime>"
            f"<caisse>75{number}</caisse><centreCarte>880{number}</centreCarte><codeGestion>1{number}</codeGestion></amo>"
            f"</T_AsnBeneficiaire></listeBenef></T_AsnDonneesVitale>")


def first_card():
    return VirtualCard(specimen_files(card_xml("0000000000011111", "SPECIMEN", 1)))


def second_card():
    return VirtualCard(specimen_files(card_xml("0000000000022222", "AUTRE", 2)))


def read(card, reader):
    with started(STAGE, card, reader) as service:
        return service.read()


class CardRemoval(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        card = first_card()
        cls.first = read(card, Reader())
        cls.commands = len(card.commands)
        cls.second = read(second_card(), Reader())

    @classmethod
    def numbers(cls):
        """The commands at which the rounds act: the first ones, every third, and the last."""
        return sorted({1, 2, *range(3, cls.commands, 3), cls.commands})

    def results(self, round_of):
        """The result of each round, by the command at which it acts."""
        numbers = self.numbers()
        with ThreadPoolExecutor(WORKERS) as pool:
            return dict(zip(numbers, pool.map(round_of, numbers)))

    def expected(self, at_the_first, otherwise, at_the_last):
        return {**dict.fromkeys(self.numbers(), otherwise), 1: at_the_first, self.commands: at_the_last}

    def test_the_two_cards_are_read_and_differ(self):
        self.assertIn("<nomUsuel>SPECIMEN</nomUsuel>", self.first)
        self.assertIn("<nomUsuel>AUTRE</nomUsuel>", self.second)
        self.assertGreater(self.commands, 40)

    def test_a_card_that_leaves_before_its_answer_is_not_read(self):
        def leave(number):
            card = first_card()
            card.before = {number: remove}
            return read(card, Reader())
        # A card that is removed before its first answer is reported as absent.
        self.assertEqual(self.results(leave), self.expected(CARD_ABSENT, CARD_CHANGED, CARD_CHANGED))

    def test_a_card_that_leaves_after_its_answer_is_not_read_unless_it_was_the_last(self):
        def leave(number):
            card = first_card()
            card.after = {number: remove}
            return read(card, Reader())
        self.assertEqual(self.results(leave), self.expected(CARD_CHANGED, CARD_CHANGED, self.first))

    def swapped(self, event):
        """A swap before or after the answer to a command, and the read that follows."""
        def swap(number):
            reader, card = Reader(), first_card()
            with second_card() as other:
                setattr(card, event, {number: swap_for(other, reader.port)})
                with started(STAGE, card, reader) as service:
                    return service.read(), service.read_soon()
        return self.results(swap)

    def assert_read_whole(self, results):
        self.assertEqual(set(results), {self.second})

    def test_a_card_that_is_swapped_before_its_answer_is_not_read(self):
        results = self.swapped("before")
        # If the first card has not answered, the other one is read normally.
        self.assertEqual({number: result for number, (result, _) in results.items()},
                         self.expected(self.second, CARD_CHANGED, CARD_CHANGED))
        self.assert_read_whole(after for _, after in results.values())

    def test_a_card_that_is_swapped_after_its_answer_is_not_read_unless_it_was_the_last(self):
        results = self.swapped("after")
        self.assertEqual({number: result for number, (result, _) in results.items()},
                         self.expected(CARD_CHANGED, CARD_CHANGED, self.first))
        self.assert_read_whole(after for _, after in results.values())


if __name__ == "__main__":
    unittest.main()
