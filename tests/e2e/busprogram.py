"""Scripts of this folder that own a name on the session bus, and the processes that run them."""

import os
import subprocess
import sys

from gi.repository import Gio, GLib

FOLDER = os.path.dirname(os.path.abspath(__file__))


class BusProgram:
    """Such a script in another process, which is ready; a context manager that ends it."""

    def __init__(self, script, *arguments):
        self.process = subprocess.Popen(["/usr/bin/python3", os.path.join(FOLDER, script), *arguments],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.process.stdout.readline()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.communicate()

    def tell(self, line):
        self.process.stdin.write(f"{line}\n")
        self.process.stdin.flush()


def serve(bus, name, hear):
    """Owns the name, and passes on each line of the standard input until the input ends."""
    loop = GLib.MainLoop()

    def read(*_):
        line = sys.stdin.readline()
        if line:
            hear(line.strip())
        else:
            loop.quit()
        return bool(line)

    GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, read)
    # Ready when the name is owned.
    Gio.bus_own_name_on_connection(bus, name, Gio.BusNameOwnerFlags.NONE, lambda *_: print("ready", flush=True), None)
    loop.run()
