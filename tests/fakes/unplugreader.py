"""A reader that can be unplugged. It answers the requests of its driver, unplug-driver.c."""

import os
import socket
import struct
import threading

SUCCESS, POWER_FAILURE, COMMUNICATION_ERROR, TIMED_OUT, PRESENT, ABSENT = 0, 608, 612, 613, 615, 616


class UnplugReader:
    """A reader at a path, plugged in or not, with a card or without. `before` maps the number of a command, counted
    from 1, to a result that replaces the card's answer, or to a function that returns such a result."""

    def __init__(self, path):
        self.path = path
        self.card = None
        self.before = {}
        self.commands = 0
        self.server = None
        self.looked = threading.Event()  # set whenever the driver asks whether there is a card

    def __enter__(self):
        self.plug()
        return self

    def __exit__(self, *_):
        self.unplug()

    def plug(self):
        self.server = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        self.server.bind(self.path)
        self.server.listen()
        threading.Thread(target=self.serve, args=(self.server,), daemon=True).start()

    def unplug(self):
        if self.server is not None:
            os.remove(self.path)
            # Wakes the thread that waits in accept(). Requests that arrive meanwhile get no answer.
            self.server.shutdown(socket.SHUT_RDWR)
            self.server.close()
            self.server = None

    def insert(self, card):
        self.commands = 0
        card.forget()
        self.card = card

    def remove(self):
        self.card = None

    def serve(self, server):
        while True:
            try:
                connection, _ = server.accept()
            except OSError:
                return
            with connection:
                try:
                    request = connection.recv(4096)
                    code, data = self.answer(request[:1], request[1:])
                    if server is self.server:
                        connection.send(struct.pack("<H", code) + data)
                except OSError:
                    pass  # the driver no longer waits

    def answer(self, request, data):
        card = self.card
        if request == b"P":
            self.looked.set()
            return (PRESENT if card else ABSENT), b""
        if card is None:
            return COMMUNICATION_ERROR, b""
        if request == b"U":
            card.forget()
            return (SUCCESS, card.atr) if card.atr else (POWER_FAILURE, b"")
        if request == b"D":
            return SUCCESS, b""
        self.commands += 1
        result = self.before.get(self.commands)
        if callable(result):
            result = result()
        return (SUCCESS, card.answer(data)) if result is None else (result, b"")
