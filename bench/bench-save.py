#!/usr/bin/env python3
"""pelmora --save as a whole process, beside the bare program that writes the same page; and many cards in one run.

Usage: bench-save.py PELMORA BARE RESOURCES
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time

RUNS = 41
WARM_UP = 3


def run(command, environment):
    """Wall seconds and peak memory (MiB) of one run, from its start to its end."""
    start = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=environment)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command[0]}: exit code {process.returncode}")
    return seconds, usage.ru_maxrss / 1024


def compare(pelmora, bare, environment):
    """Both commands in turn, so that a slower moment of the machine falls on both."""
    pairs = [(run(pelmora, environment), run(bare, environment)) for _ in range(RUNS + WARM_UP)][WARM_UP:]
    for name, index in (("pelmora --save", 0), ("bare program", 1)):
        seconds = statistics.median(pair[index][0] for pair in pairs)
        memory = statistics.median(pair[index][1] for pair in pairs)
        print(f"{name:16} {seconds * 1000:8.2f} ms {memory:8.1f} MiB")
    ratio = statistics.median(ours[0] / floor[0] for ours, floor in pairs)
    print(f"{'ratio':16} {ratio:8.2f}          (at most 0.60)")


def many_cards(pelmora, specimen, folder, environment):
    """The same card under many names, all in one run."""
    with open(specimen, encoding="utf-8") as file:
        card = file.read()
    paths = []
    for number in range(1000):
        path = os.path.join(folder, f"card-{number}.xml")
        with open(path, "w", encoding="utf-8") as file:
            file.write(card.replace(">SPECIMEN<", f">SPECIMEN {number}<"))
        paths.append(path)
    for count in (10, 100, 1000):
        seconds, memory = run([pelmora, "--save", os.path.join(folder, f"out-{count}"), *paths[:count]],
                              environment)
        print(f"{count:5} cards {seconds:8.3f} s {seconds / count * 1000:8.2f} ms each {memory:8.1f} MiB")


def main():
    pelmora, bare, resources = sys.argv[1:]
    specimen = os.path.join(resources, "specimen.xml")
    # In memory where there is such a folder: the programs are compared, not the disk, which pelmora waits for and the bare
    # program does not.
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory() as settings, tempfile.TemporaryDirectory(dir=memory) as folder:
        # Without the user's own settings: they can ask for a title, which the bare page has not.
        environment = {**os.environ, "XDG_CONFIG_HOME": settings}
        compare([pelmora, "--save", os.path.join(folder, "out"), specimen],
                [bare, resources, os.path.join(folder, "bare.pdf")], environment)
        with tempfile.TemporaryDirectory() as cards:
            many_cards(pelmora, specimen, cards, environment)


main()
