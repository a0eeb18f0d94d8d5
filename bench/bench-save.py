#!/usr/bin/env python3
"""pelmora --save as a whole process, beside the bare program that writes the same page and the raw one that compresses
and writes the finished page; and many cards in one run.

Usage: bench-save.py PELMORA BARE RAW RESOURCES
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


def compare(commands, environment):
    """Runs all commands in turn, so that a slow moment of the machine affects all of them."""
    rounds = [[run(command, environment) for command in commands] for _ in range(RUNS + WARM_UP)][WARM_UP:]
    for name, index in (("pelmora --save", 0), ("bare program", 1), ("raw program", 2)):
        seconds = statistics.median(each[index][0] for each in rounds)
        # If a program uses less memory than this script, the figure is the script's, from before the exec.
        memory = statistics.median(each[index][1] for each in rounds)
        ratio = statistics.median(each[0][0] / each[index][0] for each in rounds)
        target = {0: "(at most 16 MiB)", 1: f"x {ratio:.2f} (at most 0.60)", 2: f"x {ratio:.2f}"}[index]
        print(f"{name:16} {seconds * 1000:8.2f} ms {memory:8.1f} MiB   {target}")


def many_cards(pelmora, specimen, folder, disk, environment):
    """The same card under many names, all in one run: in memory, then on the disk, which each document is flushed to."""
    with open(specimen, encoding="utf-8") as file:
        card = file.read()
    paths = []
    for number in range(1000):
        path = os.path.join(folder, f"card-{number}.xml")
        with open(path, "w", encoding="utf-8") as file:
            file.write(card.replace(">SPECIMEN<", f">SPECIMEN {number}<"))
        paths.append(path)
    each = {}
    for count in (10, 100, 1000):
        seconds, memory = run([pelmora, "--save", os.path.join(folder, f"out-{count}"), *paths[:count]],
                              environment)
        each[count] = seconds / count * 1000
        print(f"{count:5} cards {seconds:8.3f} s {each[count]:8.2f} ms each {memory:8.1f} MiB")
    count = 100
    seconds, _ = run([pelmora, "--save", os.path.join(disk, "out"), *paths[:count]], environment)
    print(f"on the disk, its flush by itself {seconds / count * 1000 - each[count]:8.2f} ms each")


def main():
    pelmora, bare, raw, resources = sys.argv[1:]
    specimen = os.path.join(resources, "specimen.xml")
    # In memory if there is such a folder: the disk is not measured. Only pelmora would wait for it.
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory() as settings, tempfile.TemporaryDirectory(dir=memory) as folder:
        # Without the user's own settings: they can add a title, which the bare page does not have.
        environment = {**os.environ, "XDG_CONFIG_HOME": settings}
        save = [pelmora, "--save", os.path.join(folder, "out"), specimen]
        run(save, environment)
        (document,) = os.listdir(os.path.join(folder, "out"))
        uncompressed = os.path.join(folder, "uncompressed.pdf")
        subprocess.run(["qpdf", "--stream-data=uncompress", os.path.join(folder, "out", document), uncompressed],
                       check=True)
        compare([save, [bare, resources, os.path.join(folder, "bare.pdf")],
                 [raw, uncompressed, os.path.join(folder, "raw")]], environment)
        with tempfile.TemporaryDirectory() as disk:
            many_cards(pelmora, specimen, folder, disk, environment)


main()
