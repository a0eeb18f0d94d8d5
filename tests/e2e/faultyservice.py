"""A card service with a fault that is computed from a number. Usage: faultyservice.py NUMBER SPECIMEN [--patient]

With --patient it may also send nothing, or send without end, until the application's time limit. The first line on
standard error names the fault. The memory measured for a run includes the service's own, so it uses little, whatever it
sends. It starts in 20 ms because it has its own CBOR encoder, which must also be able to write invalid CBOR."""

import os
import random
import re
import signal
import struct
import sys
import time

COMMANDS = ("init", "readers_list", "set_readers", "vitale_read", "informations")
READER = "Feitian SCR301"
LIMIT = 4 << 20  # of a message


def head(major, value):
    if value < 24:
        return bytes([major << 5 | value])
    for code, size in enumerate((1, 2, 4, 8)):
        if value < 1 << 8 * size:
            return bytes([major << 5 | 24 + code]) + value.to_bytes(size, "big")
    raise ValueError(value)


def encode(value):
    if isinstance(value, Raw):
        return value.data
    if value is None or isinstance(value, bool):
        return {None: b"\xf6", True: b"\xf5", False: b"\xf4"}[value]
    if isinstance(value, int):
        return head(0, value) if value >= 0 else head(1, -1 - value)
    if isinstance(value, float):
        return b"\xfb" + struct.pack(">d", value)
    if isinstance(value, str):
        data = value.encode("utf-8", "surrogatepass")
        return head(3, len(data)) + data
    if isinstance(value, bytes):
        return head(2, len(value)) + value
    if isinstance(value, list):
        return head(4, len(value)) + b"".join(map(encode, value))
    return head(5, len(value)) + b"".join(encode(key) + encode(item) for key, item in value.items())


class Raw:
    """Raw bytes instead of a value."""

    def __init__(self, data):
        self.data = data

    def __hash__(self):
        return hash(self.data)


def requests():
    """The number and the command of each request. The application's messages are valid: nothing else is checked."""
    buffer = b""
    while True:
        part = os.read(0, 65536)
        if not part:
            return
        buffer += part
        while match := re.match(rb"\x82(?:([\x00-\x17])|\x18(.)|\x19(..))[\xa0-\xbf].*?gCommand.([a-z_]+)", buffer,
                                re.DOTALL):
            command = next(name for name in sorted(COMMANDS, key=len, reverse=True)
                           if match[4].startswith(name.encode()))
            yield int.from_bytes(match[1] or match[2] or match[3], "big"), command
            following = re.search(rb"\x82(?:[\x00-\x17]|\x18.|\x19..)[\xa0-\xbf]", buffer[match.end():], re.DOTALL)
            buffer = buffer[match.end() + following.start():] if following else b""


def say(*parts):
    for part in parts:
        while part:
            part = part[os.write(1, part):]


def damaged(text, chance):
    """The card's document with one to three faults in it."""
    for _ in range(chance.randint(1, 3)):
        data = text if isinstance(text, bytes) else text.encode("utf-8", "surrogatepass")
        place = chance.randrange(len(data))
        element = re.escape(chance.choice(re.findall(rb"<(\w+)>", data) or [b"x"]))
        kind = chance.randrange(16)
        if kind == 0:  # bits
            data = data[:place] + bytes([data[place] ^ 1 << chance.randrange(8)]) + data[place + 1:]
        elif kind == 1:  # the end is missing
            data = data[:place]
        elif kind == 2:  # an element is missing
            data = re.sub(rb"<%b>.*?</%b>" % (element, element), b"", data, chance.randint(0, 1), re.DOTALL)
        elif kind == 3:  # an element many times
            data = re.sub(rb"<%b>.*?</%b>" % (element, element),
                          lambda match: match[0] * min(chance.choice((2, 50, 5000)), LIMIT // len(match[0]) // 2),
                          data, 1, re.DOTALL)
        elif kind == 4:  # a document type, and what it may declare
            bomb = b"".join(b'<!ENTITY a%d "%b">' % (n, b"&a%d;" % (n - 1) * 10 if n else b"lol") for n in range(9))
            data = re.sub(rb"\?>", b"?><!DOCTYPE T [" + chance.choice(
                (b"", bomb, b'<!ENTITY a8 SYSTEM "file:///etc/passwd">')) + b"]>", data, 1)
            data = re.sub(rb">([^<>]+)</%b>" % element, b">&a8;</" + element + b">", data, 1)
        elif kind == 5:  # deep nesting
            depth = chance.choice((100, 255, 256, 257, 10_000, 300_000))
            data = data[:place] + b"<a>" * depth + b"x" + b"</a>" * depth + data[place:]
        elif kind == 6:  # a long text
            data = re.sub(rb"<%b>[^<]*" % element,
                          b"<" + element + b">" + b"x" * chance.choice((300, 70_000, 3_000_000)), data, 1)
        elif kind == 7:  # empty texts
            data = re.sub(rb"<%b>[^<]*" % element, b"<" + element + b">", data)
        elif kind == 8:  # other characters
            other = chance.choice(("\0", "\x1b[31m", "\u202e", "\ud800", "\U0001f600", "e\u0301" * 500, "\t\n", "../../"))
            data = re.sub(rb"<%b>" % element, b"<" + element + b">" + other.encode("utf-8", "surrogatepass"), data)
        elif kind == 9:  # another encoding
            data = data.decode("utf-8", "replace").encode(
                chance.choice(("utf-16", "utf-32", "latin-1", "cp1252", "utf-7")), "replace")
        elif kind == 10:  # another encoding is declared
            data = data.replace(b"UTF-8", chance.choice((b"UTF-16", b"EBCDIC", b"x" * 1000)))
        elif kind == 11:  # many attributes
            data = re.sub(rb"<%b>" % element,
                          b"<" + element + b"".join(b' a%d="x"' % n for n in range(chance.choice((1, 1000, 100_000)))) + b">",
                          data, 1)
        elif kind == 12:  # another root
            data = data.replace(b"T_AsnDonneesVitale", chance.choice((b"apiLecVitale", b"html", b"T")))
        elif kind == 13:  # nothing, or nearly
            data = chance.choice((b"<", b" ", b"<a/>", b"\xef\xbb\xbf", b"%PDF-1.4"))
        elif kind == 14:  # invalid numbers
            data = re.sub(rb"\b\d+\b", chance.choice((b"-1", b"99999999999999999999", b"NaN", b"")), data,
                          chance.randint(0, 3))
        else:  # very many people
            person = re.search(rb"<T_AsnBeneficiaire>.*?</T_AsnBeneficiaire>", data, re.DOTALL)
            if person:
                count = min(chance.choice((20, 499, 2000)), LIMIT // len(person[0]) // 2)
                data = data.replace(person[0], person[0] * count, 1)
        text = data[:LIMIT - 100_000] or b" "
    if chance.random() < 0.5:
        return text
    return text.decode("utf-8", "replace")


def odd_value(chance):
    return chance.choice((
        0, -1, 2 ** 63, 2 ** 64 - 1, -2 ** 64, True, False, None, 1.5, float("nan"), float("inf"), "", "success\0", b"",
        b"\xff\xfe", [], [[]], {}, {"a": {"b": []}}, Raw(b"\xf7"), Raw(b"\xe0"), Raw(b"\xf8\xff"), Raw(b"\xf9\x7e\x00"),
        Raw(b"\x7f\x61a\x61b\xff"), Raw(b"\x9f\xff"), Raw(b"\xbf\xff"), Raw(b"\x7f\x61a"), Raw(b"\xc0\x61a"),
        Raw(b"\xc2\x58\x20" + b"\xff" * 32), Raw(b"\xd9\xd9\xf7\x61a"), Raw(b"\x1c"), Raw(b"\xff"), "x" * 100_000,
        ["x"] * 10_000, Raw(b"\x63\xff\xfe\xfd"), Raw(b"\x7a\xff\xff\xff\xff"), Raw(b"\x5b" + b"\xff" * 8)))


def reply_of(command, specimen):
    return {
        "init": {"Status": "success", "Embedded": "true"},
        "readers_list": {"Status": "success", "Readers": ["Alcor AU9540", READER]},
        "set_readers": {"Status": "success"},
        "vitale_read": {"Status": "success", "Vitale": specimen, "FundCodeLibelle": "CPAM de Ville"},
        "informations": {"Status": "success", "Informations": "<apiLecVitale><version>1</version></apiLecVitale>"},
    }[command]


def end_badly(chance):
    if chance.random() < 0.3:
        os._exit(chance.choice((0, 1, 42, 255)))
    os.kill(os.getpid(), chance.choice((signal.SIGKILL, signal.SIGSEGV, signal.SIGABRT, signal.SIGTERM, signal.SIGBUS)))


def wait_for_ever():
    while True:
        signal.pause()


# The faults. Arguments: the random generator, the request's number, and the correct reply as a dictionary. The service
# continues after a fault unless the fault ends or blocks it.


def late(chance, number, reply):
    time.sleep(chance.random() / 3)
    say(encode([number, reply]))


def garbage(chance, number, reply):
    say(chance.randbytes(chance.choice((1, 5, 100, 10_000, 300_000))))
    if chance.random() < 0.5:
        say(encode([number, reply]))
    end_badly(chance)


def cut(chance, number, reply):
    data = encode([number, reply])
    say(data[:chance.randrange(1, len(data))])
    end_badly(chance)


def flipped(chance, number, reply):
    data = bytearray(encode([number, reply]))
    for _ in range(chance.randint(1, 4)):
        data[chance.randrange(min(len(data), 60))] ^= 1 << chance.randrange(8)
    say(bytes(data))
    end_badly(chance)


def in_pieces(chance, number, reply):
    data = encode([number, reply])
    step = chance.randint(1, 700)
    for start in range(0, len(data), step):
        say(data[start:start + step])


def huge(chance, number, reply):
    kind = chance.randrange(4)
    if kind == 0:
        say(b"\x82", encode(number), b"\xa1", encode("Status"), head(3, chance.choice((LIMIT + 1, 2 ** 31, 2 ** 63))))
        for _ in range(100):
            say(b"x" * 65536)
    elif kind == 1:
        say(encode([number, {**reply, "More": "x" * (LIMIT - 10_000)}]))
    elif kind == 2:
        count = chance.choice((100_000, LIMIT - 10_000))
        say(encode([number, {**reply, "More": Raw(head(4, count) + encode("") * count)}]))
    else:
        say(encode([number, {**reply, "More": Raw(b"\x9f" + b"\x00" * (LIMIT - 10_000) + b"\xff")}]))


def tags(chance, number, reply):
    count = chance.choice((1, 15, 16, 1000, LIMIT - 1000))
    tag = chance.choice((b"\xc0", b"\xd8\x20"))
    many = tag * (count // len(tag) or 1)
    place = chance.randrange(3)
    if place == 0:
        say(many, encode([number, reply]))
    elif place == 1:
        say(encode([number, {**reply, "Status": Raw(many + encode("success"))}]))
    else:
        count = min(count, LIMIT // 4)
        say(encode([number, {**reply, "More": Raw(head(4, count) + (tag + b"\x00") * count)}]))


def unknown_keys(chance, number, reply):
    count = chance.choice((1, 100, 10_000, 300_000))
    kind = chance.randrange(3)
    more = bytearray()
    for n in range(count):
        more += encode("k%d" % n if kind == 0 else n if kind == 1 else [n]) + encode(n)
    fields = b"".join(encode(key) + encode(item) for key, item in reply.items())
    say(b"\x82", encode(number), head(5, len(reply) + count), fields, bytes(more))


def deep(chance, number, reply):
    depth = chance.choice((10, 14, 15, 16, 17, 1000, LIMIT - 1000))
    opening, closing = chance.choice(((b"\x81", b""), (b"\x9f", b"\xff"), (b"\xa1\x00", b"")))
    depth = min(depth, (LIMIT - 1000) // (len(opening) + len(closing)))
    say(encode([number, {**reply, "More": Raw(opening * depth + b"\x00" + closing * depth)}]))


def lie(chance, number, reply):
    key = chance.choice(list(reply))
    say(encode([number, {**reply, key: odd_value(chance)}]))
    end_badly(chance)


def odd_frame(chance, number, reply):
    odd = odd_value(chance)
    say(encode(chance.choice(([odd, reply], [number, odd], odd, [number], [number, reply, odd], {number: reply}, []))))
    end_badly(chance)


def missing(chance, number, reply):
    del reply[chance.choice(list(reply))]
    say(encode([number, reply]))


def wrong_number(chance, number, reply):
    say(encode([chance.choice((number + 1, number - 1, 4711, 2 ** 32, 0)), reply]))
    end_badly(chance)


def twice(chance, number, reply):
    say(encode([number, reply]) * chance.choice((2, 3, 1000)))


def no_answer(chance, number, reply):
    say(encode([number, None]))


def failure(chance, number, reply):
    say(encode([number, {"Status": chance.choice(("error", "Success", "")),
                         "Result": chance.choice((0, 11, 13, 15, 17, 25, -1, 2 ** 40, 10 ** 18))}]))


def unsolicited(chance, number, reply):
    message = encode([0, {"Event": "x" * chance.choice((0, 10, 5000))}])
    for _ in range(chance.choice((1, 50, 500))):
        say(message * 20)
    say(encode([number, reply]))


def chatter(chance, number, reply):
    line = chance.choice((b"ligne\n", b"x" * 5000 + b"\n", b"\0\xff\x1b[31m\n", b"sans fin ", b"\n"))
    for _ in range(chance.choice((1, 100, 20_000))):
        os.write(2, line)
    say(encode([number, reply]))


def crash(chance, number, reply):
    if chance.random() < 0.5:
        say(encode([number, reply]))
    end_badly(chance)


def closed(chance, number, reply):
    os.close(chance.choice((0, 1)))
    wait_for_ever()


def child(chance, number, reply):
    """Leaves a child process that keeps the pipes open."""
    if os.fork() == 0:
        signal.alarm(10)
        wait_for_ever()
    if chance.random() < 0.5:
        say(encode([number, reply]))
    end_badly(chance)


def readers(chance, number, reply):
    names = chance.choice(([], [""], [READER], [READER] * 1000, ["x" * 100_000], [READER + "\0"], [READER, 1, None],
                           ["a"] * 100_000, [READER.lower()], ["\ud800", READER], [READER, READER + " (2)"]))
    say(encode([number, {**reply, "Readers": names}]))


def card(chance, number, reply):
    if "Vitale" in reply:
        reply["Vitale"] = damaged(reply["Vitale"], chance)
    elif "Informations" in reply:
        reply["Informations"] = damaged(reply["Informations"], chance)
    say(encode([number, reply]))


def silence(chance, number, reply):
    if chance.random() < 0.5:
        data = encode([number, reply])
        say(data[:chance.randrange(len(data))])
    wait_for_ever()


def flood(chance, number, reply):
    message = chance.choice((encode([0, {}]), encode([0, {"a": "x" * 60_000}]), encode([99, reply]), b"\x9f", b"\xc1")) * 50
    while True:
        say(message)


def chatter_for_ever(chance, number, reply):
    while True:
        os.write(2, b"bruit\n" * 1000)


# The correct card is sent too.
HARMLESS = (late, in_pieces, unsolicited, chatter)
QUICK = HARMLESS + (garbage, cut, flipped, huge, tags, unknown_keys, deep, lie, odd_frame, missing, wrong_number, twice,
                    no_answer, failure, crash, closed, child, readers, card, card, card, card, card, card)
LASTING = (silence, flood, chatter_for_ever)


def choice(number, patient):
    """A random generator seeded by the number, the fault and its command."""
    chance = random.Random(number)
    if patient and chance.random() < 0.03:
        fault = chance.choice(LASTING)
    else:
        fault = chance.choice(QUICK)
    command = chance.choice(COMMANDS[:4])
    if fault is card:
        command = "vitale_read"
    if fault is readers:
        command = "readers_list"
    return chance, fault, command


def main():
    with open(sys.argv[2], encoding="utf-8") as file:
        # Each number gives a card with another first name.
        specimen = file.read().replace("Hélène", f"Hélène {sys.argv[1]}")
    chance, fault, at = choice(int(sys.argv[1]), "--patient" in sys.argv)
    os.write(2, f"{fault.__name__} at {at}\n".encode())
    for number, command in requests():
        reply = reply_of(command, specimen)
        if command == at:
            fault(chance, number, reply)
        else:
            say(encode([number, reply]))


if __name__ == "__main__":
    try:
        main()
    except BrokenPipeError:
        os._exit(0)  # The application has closed its end.
