"""Many cards one after another. Usage: test_reader_rounds.py STAGE, in a network of its own"""

import os
import sys
import unittest
from concurrent.futures import ThreadPoolExecutor

from memory import is_sanitized
from pcsc import MODEL, OtherProgram, PcscService, Reader
from service import CardService

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes"))
from virtualcard import VirtualCard  # noqa: E402

STAGE = sys.argv.pop(1)
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")

# Parallel rounds: most of a round is waiting for PC/SC to check the reader.
ROUNDS, SERVICES = 200, 4
WARM_UP = 10  # rounds after which nothing may grow
GROWTH = 64  # kilobytes; leaking 40 documents of 3000 characters would take more


class Life:
    """A card service with its reader, and what it uses after each round."""

    def __init__(self):
        self.reader = Reader()
        self.results = set()
        self.descriptors = []
        self.threads = []
        self.memory = []

    def live(self):
        with PcscService(self.reader) as pcsc, CardService(STAGE, **pcsc.environment()) as service:
            self.bound = service.bind()
            with OtherProgram(pcsc, "watch", MODEL + " 00 00") as watch, VirtualCard.specimen(SPECIMEN) as card:
                for _ in range(ROUNDS // SERVICES):
                    self.round(service, watch, card)
            self.is_sanitized = is_sanitized(service.process.pid)
            self.end = service.finish()
            self.log = service.log()
        return self

    def round(self, service, watch, card):
        card.insert(self.reader.port)
        watch.expect("present")
        self.results.add(service.read())
        card.remove()
        watch.expect("empty")
        self.descriptors.append(service.descriptors())
        self.threads.append(service.threads())
        self.memory.append(service.private_memory())


class ReaderRounds(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with ThreadPoolExecutor(SERVICES) as pool:
            cls.lives = list(pool.map(Life.live, [Life() for _ in range(SERVICES)]))

    def test_every_card_is_read(self):
        for life in self.lives:
            self.assertTrue(life.bound)
            document, = life.results
            self.assertIn("<nomUsuel>SPECIMEN</nomUsuel>", document)
            self.assertEqual(life.log, "")

    def test_nothing_is_left_of_a_round(self):
        for life in self.lives:
            self.assertEqual(set(life.descriptors[WARM_UP:]), {life.descriptors[WARM_UP]})
            self.assertEqual(set(life.threads[WARM_UP:]), {life.threads[WARM_UP]})

    def test_memory_does_not_grow(self):
        for life in self.lives:
            if life.is_sanitized:
                self.skipTest("memory that is given back is kept for a while")
            self.assertLess(life.memory[-1] - life.memory[WARM_UP], GROWTH)

    def test_the_service_leaves_when_it_is_told_to(self):
        self.assertEqual([life.end for life in self.lives], [0] * SERVICES)


if __name__ == "__main__":
    unittest.main()
