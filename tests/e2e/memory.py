"""Searches another process's memory."""

import re

ENCODINGS = ("utf-8", "utf-16-le", "latin-1")


def writable_memory(pid):
    """The content of each of the process's writable mappings, by its line."""
    with open(f"/proc/{pid}/maps", encoding="utf-8") as maps, open(f"/proc/{pid}/mem", "rb", buffering=0) as memory:
        for line in maps:
            start, end, rights = re.match(r"([0-9a-f]+)-([0-9a-f]+) (\S+)", line).groups()
            if "w" not in rights:
                continue
            memory.seek(int(start, 16))
            try:
                yield line.strip(), memory.read(int(end, 16) - int(start, 16))
            except OSError:  # of a device
                continue


def traces(pid, texts):
    """The places of the texts in the process's memory: "text as encoding in mapping"."""
    forms = [(text, encoding, text.encode(encoding)) for text in texts for encoding in ENCODINGS]
    return [f"{text} as {encoding} in {line}" for line, content in writable_memory(pid)
            for text, encoding, form in forms if form in content]


def is_sanitized(pid):
    """Whether the process keeps freed memory, as sanitizers do."""
    with open(f"/proc/{pid}/maps", encoding="utf-8") as maps:
        return any("libasan" in line or "libtsan" in line for line in maps)
