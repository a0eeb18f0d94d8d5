#!/usr/bin/env python3
"""The cost of starting another program through bin/pelmora: a program that does nothing, started by it and directly.

Usage: bench-door.py PELMORA
"""

import os
import shutil
import statistics
import sys
import tempfile
import time

RUNS = 500
WARM_UP = 10


def run(program):
    """Wall milliseconds from the start to the end."""
    start = time.perf_counter()
    # The option is wrong usage for bin/pelmora, and the program ignores it.
    process = os.posix_spawn(program, [program, "-x"], os.environ)
    _, status = os.waitpid(process, 0)
    milliseconds = (time.perf_counter() - start) * 1000
    if status != 0:
        sys.exit(f"{program}: wait status {status}")
    return milliseconds


def main():
    with tempfile.TemporaryDirectory() as tree:
        door = os.path.join(tree, "bin", "pelmora")
        program = os.path.join(tree, "libexec", "pelmora", "pelmora-cards")
        for source, path in ((sys.argv[1], door), (shutil.which("true"), program)):
            os.makedirs(os.path.dirname(path))
            shutil.copy(source, path)
        pairs = [(run(door), run(program)) for _ in range(RUNS + WARM_UP)][WARM_UP:]
    print(f"{'program alone':16} {statistics.median(direct for _, direct in pairs):8.2f} ms")
    print(f"{'by the door':16} {statistics.median(opened for opened, _ in pairs):8.2f} ms")
    print(f"{'the door':16} {statistics.median(opened - direct for opened, direct in pairs):8.2f} ms (at most 1)")


main()
