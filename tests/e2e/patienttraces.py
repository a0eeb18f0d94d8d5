"""Records what a desktop, its logs and its processes show, and searches it for a patient."""

import os
import re
import subprocess
import threading

from gi.repository import Gio

from desktop import wait

# The most bytes that are read of a file; the test's own files are smaller.
LARGEST = 64 << 20


class Patient:
    """A fictitious patient whose names and number occur nowhere else."""

    last_name, first_name, number = "ZYGOTMARQUE", "QUIRINALINE", "287067599887742"

    def __init__(self):
        texts = [text.lower() for text in (self.last_name, self.first_name)]
        forms = {re.escape(text.encode(encoding)) for text in texts for encoding in ("utf-8", "utf-16-le", "utf-16-be")}
        # The number with or without its key, with blanks of any kind between the digits, or two bytes a digit.
        blank = rb"(?: |\xa0|\xc2\xa0|\xe2\x80\xaf|-|\.)?"
        digits = self.number[:13]
        forms.add(blank.join(digit.encode() for digit in digits))
        forms |= {re.escape(digits.encode(encoding)) for encoding in ("utf-16-le", "utf-16-be")}
        self._pattern = re.compile(b"|".join(sorted(forms)))

    def is_in(self, content):
        if isinstance(content, str):
            content = content.encode(errors="surrogateescape")
        return self._pattern.search(content.lower()) is not None

    def card(self, specimen):
        """The specimen card's XML as this patient's."""
        return (specimen.replace("SPECIMEN", self.last_name).replace("Hélène", self.first_name)
                .replace("285057511612381", self.number))

    def files(self, *folders):
        """The paths of files and folders below these that name the patient, or whose content does."""
        found = set()
        for folder in folders:
            for place, names, files in os.walk(folder):
                for name in names + files:
                    path = os.path.join(place, name)
                    if self.is_in(name) or (name in files and self.is_in(content_of(path))):
                        found.add(path)
        return found

    def new_files(self, folder, start):
        """The same for the entries of the folder itself that are new or changed since that time."""
        found = []
        for entry in os.scandir(folder):
            try:
                is_new = entry.stat(follow_symlinks=False).st_ctime >= start
            except FileNotFoundError:
                continue
            if is_new and (self.is_in(entry.name) or self.is_in(content_of(entry.path))):
                found.append(entry.path)
        return found


def content_of(path):
    """A regular file's bytes; empty for other kinds of files and for missing files."""
    try:
        if not os.path.isfile(path):
            return b""
        with open(path, "rb") as file:
            return file.read(LARGEST)
    except OSError:
        return b""


class Watch:
    """Calls a function repeatedly on a thread, and keeps all its results; a context manager."""

    def __init__(self, look, pause):
        self.seen = set()
        self._look = look
        self._pause = pause
        self._ends = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._ends.set()
        self._thread.join()

    def _run(self):
        while not self._ends.is_set():
            self.seen |= set(self._look())
            self._ends.wait(self._pause)


def window_titles():
    """Names, icon names and classes of all windows, shown or not."""
    return subprocess.run(["xwininfo", "-root", "-tree"], capture_output=True, check=False).stdout.splitlines()


def processes():
    """(program, file, content) of the arguments and the environment of each process."""
    for pid in os.listdir("/proc"):
        if not pid.isdigit() or int(pid) == os.getpid():
            continue
        for file in ("cmdline", "environ"):
            content = content_of(f"/proc/{pid}/{file}")
            if content:
                yield os.path.basename(content_of(f"/proc/{pid}/comm").decode(errors="replace").strip()), file, content


def file_names(*folders):
    """The paths of all files and folders below these."""
    return {os.path.join(place, name) for folder in folders for place, names, files in os.walk(folder)
            for name in names + files}


class BusMonitor:
    """All messages on the session bus, as text; a context manager."""

    def __init__(self, folder):
        self._path = os.path.join(folder, "bus")

    def __enter__(self):
        with open(self._path, "wb") as output:
            self._process = subprocess.Popen(["dbus-monitor", "--session"], stdout=output)
        # It writes its first message when it has become a monitor.
        wait(self.messages)
        return self

    def __exit__(self, *_):
        # When this message has been recorded, all earlier ones have been, too.
        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        bus.emit_signal(None, "/", "com.morvel.Test", "End", None)
        bus.flush_sync()
        wait(lambda: b"com.morvel.Test" in self.messages())
        self._process.terminate()
        self._process.wait()

    def messages(self):
        return content_of(self._path)
