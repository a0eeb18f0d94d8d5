"""Disks for a test, in its own mount namespace."""

import subprocess


def mount(*arguments):
    subprocess.run(["mount", *arguments], check=True)


def fill(path):
    """Writes a file that takes all the space of its disk."""
    try:
        with open(path, "wb", buffering=0) as file:
            while True:
                file.write(b"x" * 4096)
    except OSError:
        pass
