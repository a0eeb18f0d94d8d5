"""A program that uses a card reader beside Pelmora. Usage: pcscclient.py exclusive|transaction|reset|watch READER

With "exclusive" or "transaction" it reserves the reader, and releases it at a line of input. With "reset" it resets the
card at each line. It prints "ready" first, and "done" after each line. With "watch" it prints "ready", and then
"present" or "empty" when a card is inserted or removed."""

import ctypes
import sys

library = ctypes.CDLL("libpcsclite.so.1")
Long = ctypes.c_long
SCOPE_SYSTEM, SHARE_EXCLUSIVE, SHARE_SHARED, PROTOCOLS, LEAVE_CARD, RESET_CARD = 2, 1, 2, 3, 0, 1


def call(function, *arguments):
    code = getattr(library, function)(*arguments)
    if code != 0:
        sys.exit(f"{function}: {code & 0xFFFFFFFF:08X}")


class ReaderState(ctypes.Structure):
    _fields_ = [("reader", ctypes.c_char_p), ("user_data", ctypes.c_void_p), ("current", ctypes.c_ulong),
                ("event", ctypes.c_ulong), ("atr_size", ctypes.c_ulong), ("atr", ctypes.c_ubyte * 33)]


def watch(context, reader):
    PRESENT, FOR_EVER = 0x20, 0xFFFFFFFF
    state = ReaderState(reader.encode())
    was_present = None
    while True:
        call("SCardGetStatusChange", context, ctypes.c_ulong(FOR_EVER), ctypes.byref(state), ctypes.c_ulong(1))
        is_present = bool(state.event & PRESENT)
        if was_present is None:
            print("ready", flush=True)
        elif is_present != was_present:
            print("present" if is_present else "empty", flush=True)
        was_present = is_present
        state.current = state.event


def main():
    action, reader = sys.argv[1:]
    context, card, protocol = Long(), Long(), ctypes.c_ulong()
    call("SCardEstablishContext", Long(SCOPE_SYSTEM), None, None, ctypes.byref(context))
    if action == "watch":
        watch(context, reader)
    call("SCardConnect", context, reader.encode(), Long(SHARE_EXCLUSIVE if action == "exclusive" else SHARE_SHARED),
         Long(PROTOCOLS), ctypes.byref(card), ctypes.byref(protocol))
    if action == "transaction":
        call("SCardBeginTransaction", card)
    print("ready", flush=True)
    for _ in sys.stdin:
        if action == "reset":
            call("SCardReconnect", card, Long(SHARE_SHARED), Long(PROTOCOLS), Long(RESET_CARD),
                 ctypes.byref(protocol))
        elif action == "transaction":
            call("SCardEndTransaction", card, Long(LEAVE_CARD))
        else:
            call("SCardDisconnect", card, Long(LEAVE_CARD))
        print("done", flush=True)


main()
