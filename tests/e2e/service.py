"""The card service as its application sees it: a child process, and messages over its standard input and output."""

import contextlib
import os
import select
import subprocess
import tempfile
import time

import cbor2

from pcsc import ENDING_WITH_PARENT, MODEL, PcscService

PATIENCE = 40  # seconds; more than any call to a reader may take


class _Replies:
    """The file that messages are decoded from, with a time limit."""

    def __init__(self, descriptor):
        self.descriptor = descriptor

    def read(self, size):
        end = time.monotonic() + PATIENCE
        data = b""
        while len(data) < size:
            if not select.select([self.descriptor], [], [], max(0, end - time.monotonic()))[0]:
                raise AssertionError("the card service does not answer")
            part = os.read(self.descriptor, size - len(data))
            if not part:
                raise EOFError
            data += part
        return data


class CardService:
    """A running card service; a context manager that ends it."""

    def __init__(self, stage, *arguments, **environment):
        self.program = os.path.join(stage, "libexec", "pelmora", "com.morvel.lvit")
        self.arguments = arguments
        # No site's settings: an empty folder.
        self.site = tempfile.TemporaryDirectory()
        self.environment = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "XDG_CONFIG_HOME": self.site.name,
                            "XDG_CONFIG_DIRS": self.site.name, **environment}
        for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"):
            if name in os.environ:
                self.environment.setdefault(name, os.environ[name])
        self.number = 0
        self.states = []  # of the reader, received between replies
        self.before = None  # what its process does before it becomes the service

    def __enter__(self):
        # A file, not a pipe: it never blocks the service.
        self.errors = os.memfd_create("errors")
        self.process = subprocess.Popen([*ENDING_WITH_PARENT, self.program, *self.arguments], env=self.environment,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self.errors,
                                        preexec_fn=self.before)
        self.replies = _Replies(self.process.stdout.fileno())
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()
        os.close(self.errors)
        self.site.cleanup()

    def send(self, command, **fields):
        self.number += 1
        cbor2.dump([self.number, {"Command": command, **fields}], self.process.stdin)
        self.process.stdin.flush()

    def receive(self):
        while True:
            number, body = cbor2.load(self.replies)
            if number != 0:
                break
            self.states.append(self.state_of(body))
        if number != self.number:
            raise AssertionError(f"a reply to {number}, not to {self.number}")
        return body

    @staticmethod
    def state_of(body):
        """The state in a message about the reader; any other message is an error."""
        if set(body) != {"Event", "State"} or body["Event"] != "reader":
            raise AssertionError(f"an unknown message: {body}")
        return body["State"]

    def next_state(self, seconds=15):
        """The next state of the reader that the service reports, or None if it reports none in that time."""
        if self.states:
            return self.states.pop(0)
        if not select.select([self.replies.descriptor], [], [], seconds)[0]:
            return None
        number, body = cbor2.load(self.replies)
        if number != 0:
            raise AssertionError(f"an unexpected reply to {number}")
        return self.state_of(body)

    def ask(self, command, **fields):
        self.send(command, **fields)
        return self.receive()

    def readers(self):
        return self.ask("readers_list")["Readers"]

    def bind(self, vitale=MODEL, professional=MODEL, mode="2"):
        """Initialises the service and chooses its readers; whether both succeeded."""
        return all(reply["Status"] == "success" for reply in (
            self.ask("init", Mode=mode),
            self.ask("set_readers", vitale_reader_name=vitale, cps_reader_name=professional)))

    def read(self):
        """The card's document, or the number of the result."""
        reply = self.ask("vitale_read")
        return reply["Vitale"] if reply["Status"] == "success" else reply.get("Result")

    def read_soon(self):
        """The result of a read after the card was noticed, which takes a moment."""
        CARD_ABSENT = 11
        return next(result for result in (self.read() for _ in range(10)) if result != CARD_ABSENT)

    def finish(self):
        """The exit code after the end of its input."""
        self.process.stdin.close()
        return self.process.wait(timeout=PATIENCE)

    def log(self):
        """Its log so far."""
        size = os.fstat(self.errors).st_size
        return os.pread(self.errors, size, 0).decode()

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def threads(self):
        return len(os.listdir(f"/proc/{self.process.pid}/task"))

    def processor_time(self):
        """Seconds of processor time that it and its broker have used."""
        processes = [self.process.pid]
        with open(f"/proc/{self.process.pid}/task/{self.process.pid}/children", encoding="ascii") as file:
            processes += file.read().split()
        return sum(self.time_of(process) for process in processes)

    @staticmethod
    def time_of(process):
        with open(f"/proc/{process}/stat", encoding="ascii") as file:
            fields = file.read().rpartition(")")[2].split()
        user, system = fields[11:13]
        return (int(user) + int(system)) / os.sysconf("SC_CLK_TCK")

    def private_memory(self):
        """Its private memory in kilobytes."""
        with open(f"/proc/{self.process.pid}/smaps_rollup", encoding="ascii") as file:
            return sum(int(line.split()[1]) for line in file if line.startswith(("Private_Dirty:", "Swap:")))


@contextlib.contextmanager
def started(stage, card, reader):
    """A card service of its own, with the card in its reader."""
    with PcscService(reader) as pcsc, CardService(stage, **pcsc.environment()) as service, card:
        if not service.bind():
            raise AssertionError(service.log())
        card.insert(reader.port)
        yield service
