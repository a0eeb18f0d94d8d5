"""Waits for conditions, and looks whether processes run."""

import time


def wait_until(condition, seconds=15, what="the condition"):
    """The condition's first true value."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.01)
    raise AssertionError(f"waited too long for {what}")


def is_running(pid):
    """Whether the process is running. A zombie process is not."""
    try:
        with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
            return file.read().rpartition(")")[2].split()[0] not in "ZX"
    except (FileNotFoundError, ProcessLookupError):
        return False
