#!/usr/bin/python3
"""The application's window beside a minimal window: start, memory, a card read, idleness. Runs in a desktop of
its own (tests/e2e/in-desktop.sh).

Usage: bench-window.py PELMORA WATCHER BARE [IDLE_SECONDS]
       bench-window.py --empty PELMORA WATCHER BARE
The second form compares starts alone, with an empty window; for a desktop without a window manager (MANAGER=none).
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
    """The watcher's figures of one run, by name."""
    with tempfile.TemporaryDirectory() as home:
        environment = {**os.environ, "HOME": home, "XDG_CONFIG_HOME": os.path.join(home, "config"),
                       "QT_QPA_PLATFORM": "xcb"}
        lines = subprocess.run([watcher, *arguments], env=environment, capture_output=True, text=True,
                               check=True).stdout.split("\n")
    return {name: float(value) for name, _, value in (line.partition(" ") for line in lines if line)}


def middle_of_read_button(pelmora):
    """The position of the button's centre in the window."""
    with desktop.Application(pelmora, "--simulate") as application:
        button = application.find("push button", "Lire")
        place = desktop.Atspi.Component.get_extents(button, desktop.Atspi.CoordType.WINDOW)
        # Qt 6.4 gives a wrong size with the place in the window.
        size = desktop.Atspi.Component.get_extents(button, desktop.Atspi.CoordType.SCREEN)
        return str(place.x + size.width // 2), str(place.y + size.height // 2)


def compare_starts(pelmora, watcher, bare, floors):
    """Prints the application's start beside those of the bare window with an option each: (option, label, limits). All are
    run in turn, so that a slow moment of the machine affects all of them."""
    commands = [(pelmora, "--simulate"), *((bare, option) for option, _, _ in floors)]
    rounds = [[watch(watcher, *command) for command in commands] for _ in range(RUNS + WARM_UP)][WARM_UP:]

    def median(of):
        return statistics.median(of(each) for each in rounds)

    print(f"{'':26} {'pelmora':>9}" + "".join(f" {label:>18} {'ratio':>7} {'limit':>6}" for _, label, _ in floors))
    for name, label in (("map", "window shown, ms"), ("cpu", "processor until shown, ms"),
                        ("memory", "memory when shown, MiB"), ("paint", "content painted, ms"),
                        ("painted-memory", "memory then, MiB")):
        # An empty window has no content.
        if any(name not in each for each in rounds[0]):
            continue
        print(f"{label:26} {median(lambda each: each[0][name]):9.1f}", end="")
        for index, (_, _, limits) in enumerate(floors, start=1):
            floor = median(lambda each: each[index][name])
            ratio = median(lambda each: each[0][name] / each[index][name])
            print(f" {floor:18.1f} {ratio:7.2f} {limits.get(name, ''):>6}", end="")
        print()
    # The tiles change when the card service is bound, and nothing changes after that.
    print(f"{'card service bound, ms':26} {median(lambda each: each[0]['settled']):9.1f}")


def main():
    if sys.argv[1] == "--empty":
        compare_starts(*sys.argv[2:], [("--empty", "empty window", {"map": 1.5})])
        return
    pelmora, watcher, bare, *options = sys.argv[1:]
    idle = options[0] if options else "60"
    compare_starts(pelmora, watcher, bare, [("--greeting", "with a greeting", {"map": 1.15, "memory": 1.2,
                                                                                "painted-memory": 1.2}),
                                            ("--fixed", "of fixed size", {})])

    place = middle_of_read_button(pelmora)
    clicks = [watch(watcher, "--click", *place, pelmora, "--simulate")["click"] for _ in range(CLICKS)]
    print(f"{'click to summary, ms':26} {statistics.median(clicks):9.1f} {'':18} {'':7} {25:6}")

    idleness = watch(watcher, "--idle", idle, pelmora, "--simulate")
    print(f"idle for {idle} s: {idleness['idle-cpu']:.1f} ms of processor time, {idleness['idle-growth']:+.2f} MiB")


main()
