#!/usr/bin/python3
"""The application's window beside a window and nothing else: start, memory, a card read, idleness. Runs in a desktop of
its own (tests/e2e/in-desktop.sh).

Usage: bench-window.py PELMORA WATCHER BARE [IDLE_SECONDS]
"""

import os
import statistics
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "e2e"))

import desktop  # noqa: E402

RUNS = 15
WARM_UP = 2
CLICKS = 5


def watch(watcher, *arguments):
    """What the watcher saw of one run, by name."""
    with tempfile.TemporaryDirectory() as home:
        environment = {**os.environ, "HOME": home, "XDG_CONFIG_HOME": os.path.join(home, "config"),
                       "QT_QPA_PLATFORM": "xcb"}
        lines = subprocess.run([watcher, *arguments], env=environment, capture_output=True, text=True,
                               check=True).stdout.split("\n")
    return {name: float(value) for name, _, value in (line.partition(" ") for line in lines if line)}


def middle_of_read_button(pelmora):
    """Where the button is in the window."""
    with desktop.Application(pelmora, "--simulate") as application:
        box = desktop.Atspi.Component.get_extents(application.find("push button", "Lire"),
                                                  desktop.Atspi.CoordType.WINDOW)
        return str(box.x + box.width // 2), str(box.y + box.height // 2)


def compare_starts(pelmora, watcher, bare):
    """Both programs in turn, so that a slower moment of the machine falls on both."""
    pairs = [(watch(watcher, pelmora, "--simulate"), watch(watcher, bare)) for _ in range(RUNS + WARM_UP)][WARM_UP:]
    print(f"{'':22} {'pelmora':>10} {'bare':>10} {'ratio':>8}")
    for name, label, limit in (("map", "window shown, ms", "at most 1.5"), ("paint", "first painting, ms", ""),
                               ("memory", "memory when shown, MiB", "at most 1.5")):
        ours = statistics.median(pair[0][name] for pair in pairs)
        floor = statistics.median(pair[1][name] for pair in pairs)
        ratio = statistics.median(pair[0][name] / pair[1][name] for pair in pairs)
        print(f"{label:22} {ours:10.1f} {floor:10.1f} {ratio:8.2f}  {limit}")
    # The tiles change when the card service is bound, and nothing changes after that.
    print(f"{'card service bound, ms':22} {statistics.median(pair[0]['settled'] for pair in pairs):10.1f}")


def main():
    pelmora, watcher, bare, *options = sys.argv[1:]
    idle = options[0] if options else "60"
    compare_starts(pelmora, watcher, bare)

    place = middle_of_read_button(pelmora)
    clicks = [watch(watcher, "--click", *place, pelmora, "--simulate")["click"] for _ in range(CLICKS)]
    print(f"{'click to summary, ms':22} {statistics.median(clicks):10.1f} {'':19}  at most 50")

    idleness = watch(watcher, "--idle", idle, pelmora, "--simulate")
    print(f"idle for {idle} s: {idleness['idle-cpu']:.1f} ms of processor time, {idleness['idle-growth']:+.2f} MiB")


main()
