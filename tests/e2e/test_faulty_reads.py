"""Reads of a card with one faulty answer. Each read gives the whole record or a documented result, never a part of the
record. Usage: test_faulty_reads.py STAGE [READS [MUTE]], in a network of its own

READS reads (100 by default) are distributed over the kinds of faults and the commands of a read. MUTE more reads (none
by default) have a card that stops answering; each takes 20 seconds. If READS is given, the outcomes are printed."""

import collections
import os
import random
import sys
import threading
import unittest
from concurrent.futures import ThreadPoolExecutor

from pcsc import Reader
from service import started

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fakes"))
import cardlayout  # noqa: E402
from virtualcard import BLOCK_CARD, PATIENT_CARD, VirtualCard, be_mute, swap_for  # noqa: E402

STAGE = sys.argv.pop(1)
READS = int(sys.argv.pop(1)) if len(sys.argv) > 1 and sys.argv[1].isdigit() else None
MUTE = int(sys.argv.pop(1)) if len(sys.argv) > 1 and sys.argv[1].isdigit() else 0
DEFAULT_READS = 100
SEED = 20261121
WORKERS = 6
CARD_CHANGED, READ_ERROR, CARD_MUTE = 15, 17, 25

with open(os.path.join(STAGE, "share", "pelmora", "specimen.xml"), encoding="utf-8") as specimen:
    SPECIMEN_XML = specimen.read()
# Every name, number and date differs between the two cards.
OTHER_XML = (SPECIMEN_XML.replace("12345<", "99999<").replace("SPECIMEN", "AUTRE").replace("MOD", "TOM")
             .replace("751", "752").replace("1985", "1986").replace("2016", "2017"))

REFUSALS = [bytes.fromhex(status) for status in ("6982", "6A82", "6985", "6A86", "6700", "6B00", "6F00", "6282", "9000",
                                                 "6300")]


def short(answer, _other, chance):
    """Fewer data with the right status."""
    return answer[:chance.randrange(max(1, len(answer) - 2))] + answer[-2:]


def cut(answer, _other, chance):
    """The end is missing, status included."""
    return answer[:chance.randrange(1, len(answer))]


def flipped(answer, _other, chance):
    """One bit is inverted."""
    changed = bytearray(answer)
    changed[chance.randrange(len(answer))] ^= 1 << chance.randrange(8)
    return bytes(changed)


def exchanged(_answer, other, _chance):
    """Another card's answer to the same command."""
    return other


def refused(_answer, _other, chance):
    return chance.choice(REFUSALS)


KINDS = {"short": short, "cut": cut, "flipped": flipped, "exchanged": exchanged, "refused": refused}


class FaultyCard(VirtualCard):
    """A card with a fault in one of its answers. The fault can be changed for each read."""

    def __init__(self, **options):
        super().__init__(cardlayout.specimen_files(SPECIMEN_XML), **options)
        # Gets the same commands; only one of its answers is used, instead of this card's.
        self.shadow = VirtualCard(cardlayout.specimen_files(OTHER_XML), **options)
        self.fault_at, self.fault, self.chance = 0, None, None

    def prepare(self, number, fault, chance):
        self.commands.clear()
        self.fault_at, self.fault, self.chance = number, fault, chance

    def forget(self):
        super().forget()
        if hasattr(self, "shadow"):
            self.shadow.forget()

    def answer(self, message):
        answer, other = super().answer(message), self.shadow.answer(message)
        return self.fault(answer, other, self.chance) if len(self.commands) == self.fault_at else answer


class Campaign:
    """The reads and their outcomes, by kind of fault."""

    def __init__(self):
        self.outcomes = collections.Counter()
        self.wrong = []
        self.lock = threading.Lock()

    def note(self, kind, number, result, true, allowed):
        outcome = "whole" if result == true else result if isinstance(result, int) else "wrong"
        with self.lock:
            self.outcomes[kind, outcome] += 1
            if outcome != "whole" and outcome not in allowed:
                self.wrong.append((kind, number, outcome))

    def faulty_answers(self, count, worker):
        """Reads by one service, each with a fault of one answer."""
        chance = random.Random(SEED + worker)
        # In turn: cards whose answers are fetched with another command (T=0), and cards that answer at once (T=1).
        card = FaultyCard(atr=BLOCK_CARD if worker % 2 else PATIENT_CARD)
        with started(STAGE, card, Reader()) as service:
            true = service.read()
            commands = len(card.commands)
            for index in range(worker, count, WORKERS):
                kind = list(KINDS)[index % len(KINDS)]
                number = 1 + (index // len(KINDS)) % commands
                before = len(service.log())
                card.prepare(number, KINDS[kind], chance)
                result = service.read()
                self.note(kind, number, result, true, (CARD_CHANGED, READ_ERROR))
                told = service.log()[before:]
                if told.count("\n") != (result != true) or "SPECIMEN" in told or "AUTRE" in told:
                    self.wrong.append((kind, number, "log", told))
            card.prepare(0, None, chance)
            if service.read() != true:
                self.wrong.append(("afterwards",))

    def card_swapped(self, number):
        reader = Reader()
        card = VirtualCard(cardlayout.specimen_files(SPECIMEN_XML))
        with VirtualCard(cardlayout.specimen_files(OTHER_XML)) as other, started(STAGE, card, reader) as service:
            true = service.read()
            card.before = {len(card.commands) + number: swap_for(other, reader.port)}
            self.note("card swapped", number, service.read(), true, (CARD_CHANGED,))

    def fallen_silent(self, number):
        card = VirtualCard(cardlayout.specimen_files(SPECIMEN_XML))
        with started(STAGE, card, Reader()) as service:
            true = service.read()
            card.before = {len(card.commands) + number: be_mute}
            self.note("mute", number, service.read(), true, (CARD_MUTE,))
            # A PC/SC service does not end while it waits for a card.
            card.remove()

    def run(self, reads, mute):
        card = VirtualCard(cardlayout.specimen_files(SPECIMEN_XML))
        with started(STAGE, card, Reader()) as service:
            service.read()
            commands = len(card.commands)
        swapped = max(4, reads // 50)
        # From the second command on: a card that is swapped before the first answer is read normally.
        places = [2 + index * (commands - 2) // max(1, swapped - 1) for index in range(swapped)]
        with ThreadPoolExecutor(WORKERS) as pool:
            tasks = [pool.submit(self.faulty_answers, reads - swapped, worker) for worker in range(WORKERS)]
            tasks += [pool.submit(self.card_swapped, number) for number in places]
        with ThreadPoolExecutor(24) as pool:
            tasks += [pool.submit(self.fallen_silent, 1 + index % commands) for index in range(mute)]
        for task in tasks:
            task.result()


class FaultyReads(unittest.TestCase):
    def test_each_gives_the_whole_record_or_a_documented_result(self):
        campaign = Campaign()
        campaign.run(READS or DEFAULT_READS, MUTE)
        if READS:
            for (kind, outcome), count in sorted(campaign.outcomes.items(), key=str):
                print(f"{kind:14} {outcome!s:6} {count:6}")
        self.assertEqual(campaign.wrong, [])
        self.assertEqual(sum(campaign.outcomes.values()), (READS or DEFAULT_READS) + MUTE)
        # After a short answer the rest is read.
        self.assertGreater(campaign.outcomes["short", "whole"], 0)
        for kind in KINDS.keys() - {"short"}:
            self.assertGreater(campaign.outcomes[kind, READ_ERROR], 0, kind)


if __name__ == "__main__":
    unittest.main()
