"""A simulated card for the virtual readers of a PC/SC service, and the ways in which a card can fail."""

import os
import socket
import struct
import sys
import threading

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from cardlayout import specimen_files  # noqa: E402

# Answers to reset: of a card with the protocol T=0, and of one with T=1.
PATIENT_CARD = bytes.fromhex("3B751300004409EA9000")
BLOCK_CARD = bytes.fromhex("3B800181")
NO_CARD_AT_ALL = bytes(2)
# One byte more than allowed: the card is present, but powering it fails.
UNPOWERABLE = bytes(34)

OK = b"\x90\x00"
NOT_FOUND = b"\x6A\x82"
NOTHING_SELECTED = b"\x69\x86"
BEYOND_THE_END = b"\x6B\x00"
END_REACHED = b"\x62\x82"
UNKNOWN_INSTRUCTION = b"\x6D\x00"
LONGEST_BLOCK = 256


class Removed(Exception):
    """The card leaves its reader instead of answering."""


class Insertion(threading.Thread):
    """A card's stay in a reader: one connection, which is closed when the card is removed."""

    def __init__(self, card, port):
        super().__init__(daemon=True)
        self.card = card
        self.gone = threading.Event()
        self.powered = threading.Event()
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=15)
        self.socket.settimeout(None)
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.start()

    def receive(self, size):
        data = b""
        while len(data) < size:
            # The driver writes in two parts: the second is sent once the first is acknowledged.
            self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_QUICKACK, 1)
            part = self.socket.recv(size - len(data))
            if not part:
                raise Removed
            data += part
        return data

    def run(self):
        POWER_CHANGES, POWER_ON, GIVE_ATR = range(3), 1, 4
        try:
            while True:
                message = self.receive(struct.unpack(">H", self.receive(2))[0])
                if len(message) > 1:
                    answer = self.card.command(message, self)
                elif message[0] == GIVE_ATR:
                    answer = self.card.atr
                elif message[0] in POWER_CHANGES:
                    self.card.forget()
                    if message[0] == POWER_ON:
                        self.powered.set()
                    continue
                self.socket.sendall(struct.pack(">H", len(answer)) + answer)
                if len(message) > 1:
                    self.card.answered(self)
        except (Removed, OSError):
            self.end()

    def end(self):
        self.gone.set()
        try:
            self.socket.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass
        self.socket.close()


class VirtualCard:
    """A card with files, {application: {file identifier: bytes, or the status word of a refusal}}.

    The answer to a SELECT is kept for GET RESPONSE (61xx), unless the card uses T=1. `before` maps the number of a
    command, counted from 1, to a function that is called before that command is answered. If the function returns
    bytes, they are the answer. `after` maps such a number to a function that is called when the answer has been sent.
    The argument of both is the Insertion. Some such functions are at the end of this file.
    """

    def __init__(self, files, atr=PATIENT_CARD, delay=0.0, corrects_lengths=False, end_status=None,
                 most=LONGEST_BLOCK, beyond=OK, tells_size=True):
        self.files = files
        self.atr = atr
        self.delay = delay                        # seconds that each command takes
        self.corrects_lengths = corrects_lengths  # a read beyond the end gets the number of available bytes (6Cxx)
        self.end_status = end_status              # of a read that reaches the end: 6282, on cards that use it
        self.most = most                          # bytes that one read returns at most
        self.beyond = beyond                      # status of a read that begins at the end
        self.tells_size = tells_size              # whether the answer to a file's selection has the file's size
        self.before = {}
        self.after = {}
        self.commands = []
        self.stay = None
        self.forget()

    @classmethod
    def specimen(cls, xml_path, **options):
        with open(xml_path, encoding="utf-8") as file:
            return cls(specimen_files(file.read()), **options)

    def insert(self, port):
        """Inserts it and waits until it is powered. It is powered only when the service saw the reader empty before."""
        self.slip_in(port)
        if not self.stay.powered.wait(timeout=15):
            raise AssertionError("the card was not powered within 15 seconds")

    def slip_in(self, port):
        """Inserts it without waiting."""
        self.commands = []
        self.forget()
        self.stay = Insertion(self, port)

    def remove(self):
        """Removes it and waits until it is removed."""
        if self.stay is not None:
            self.stay.end()
            if self.stay is not threading.current_thread():
                self.stay.join(timeout=15)
            self.stay = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.remove()

    def forget(self):
        self.application = None
        self.file = None
        self.rest = b""

    def command(self, message, stay):
        self.commands.append(message)
        if self.delay:
            stay.gone.wait(self.delay)
        fault = self.before.get(len(self.commands))
        if fault is not None:
            answer = fault(stay)
            if answer is not None:
                return answer
        return self.answer(message)

    def answered(self, stay):
        event = self.after.get(len(self.commands))
        if event is not None:
            event(stay)

    def answer(self, message):
        instruction, method, data = message[1], message[2], message[5:]
        SELECT, READ_BINARY, GET_RESPONSE, BY_NAME = 0xA4, 0xB0, 0xC0, 4
        if instruction == SELECT:
            return self.select_application(data) if method == BY_NAME else self.select_file(data)
        if instruction == GET_RESPONSE:
            return self.rest[:message[4] or LONGEST_BLOCK] + OK
        if instruction == READ_BINARY:
            return self.read((message[2] & 0x7F) << 8 | message[3], message[4] or LONGEST_BLOCK)
        return UNKNOWN_INSTRUCTION

    def select_application(self, name):
        if name not in self.files:
            return NOT_FOUND
        self.application, self.file = name, None
        return self.keep_ready(b"\x6F" + bytes([len(name) + 2, 0x84, len(name)]) + name)

    def select_file(self, identifier):
        if self.application is None or identifier not in self.files[self.application]:
            return NOT_FOUND
        self.file = self.files[self.application][identifier]
        size = 0 if isinstance(self.file, int) else len(self.file)
        if not self.tells_size:
            return self.keep_ready(b"\x6F\x00")
        return self.keep_ready(b"\x6F\x04\x80\x02" + struct.pack(">H", size))

    def keep_ready(self, answer):
        if self.atr == BLOCK_CARD:
            return answer + OK
        self.rest = answer
        return bytes([0x61, len(answer)])

    def read(self, offset, size):
        if self.file is None:
            return NOTHING_SELECTED
        if isinstance(self.file, int):
            return struct.pack(">H", self.file)
        there = self.file[offset:offset + size]
        if offset > len(self.file) or (not there and self.corrects_lengths):
            return BEYOND_THE_END
        if not there:
            return self.beyond
        if len(there) > self.most:
            return there[:self.most] + OK
        if len(there) < size and self.corrects_lengths:
            return bytes([0x6C, len(there)])
        return there + (self.end_status if self.end_status and len(there) < size else OK)


# Functions for `before` and `after`.

def remove(_stay):
    raise Removed


def be_mute(stay):
    stay.gone.wait()
    raise Removed


def saying(answer):
    """An answer instead of the card's own."""
    return lambda _stay: answer


def swap_for(other, port):
    """Another card replaces it, before the service checks the reader again."""
    def swap(stay):
        stay.end()
        other.slip_in(port)
        raise Removed
    return swap
