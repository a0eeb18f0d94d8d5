"""Writes the shipped sources of each target as one source, with their compilation database, for
checks that look at the main source alone: reading the headers again for each source takes most of the time. A finding's
place is then to be told in the sources themselves.

rooms-as-one.py write BUILD FOLDER      BUILD has unity sources
rooms-as-one.py locate FOLDER <FINDINGS"""

import json
import os
import re
import sys

from compilations import compilations

ROOMS = re.compile(r"(platform|support|update|card|service|attestation|prefs|app)/.*\.cpp$")


def targets(build):
    """The shipped sources of each target, with the words of its compilation."""
    found = {}
    for target, source, words in compilations(build):
        if ROOMS.match(source) and not target.startswith("tests/"):
            found.setdefault(target, (words, []))[1].append(source)
    return found


def joined(sources):
    """The text of the sources without what an earlier one has included, and the line where each begins."""
    included, lines, starts = set(), [], []
    for source in sources:
        starts.append((len(lines), source))
        with open(source, encoding="utf-8") as file:
            own = file.read().splitlines()
        lines += ["" if line in included else line for line in own]
        included.update(line for line in own if line.startswith("#include") and not line.endswith('.moc"'))
    return lines, starts


def arguments(words, path):
    """The compilation of that file instead, without sanitizers."""
    first = next(number for number, word in enumerate(words) if word.startswith("-"))
    flags = [word for word in words[first : words.index("-o")] if not word.startswith("-fsanitize")]
    return ["c++", *flags, "-c", path]


def write(build, folder):
    entries, places = [], {}
    for target, (words, sources) in sorted(targets(build).items()):
        path = os.path.join(folder, target.replace("/", "_") + ".cpp")
        lines, places[path] = joined(sources)
        with open(path, "w", encoding="utf-8") as file:
            file.write("\n".join(lines) + "\n")
        entries.append({"directory": os.path.abspath(build), "file": path, "arguments": arguments(words, path)})
    for name, content in (("compile_commands", entries), ("places", places)):
        with open(os.path.join(folder, name + ".json"), "w", encoding="utf-8") as file:
            json.dump(content, file)


def locate(folder):
    with open(os.path.join(folder, "places.json"), encoding="utf-8") as file:
        places = json.load(file)

    def place(match):
        line = int(match[2])
        start, source = max(begin for begin in places[match[1]] if begin[0] < line)
        return f"{source}:{line - start}"

    known = re.compile(f"({'|'.join(map(re.escape, places))}):([0-9]+)")
    for line in sys.stdin:
        sys.stdout.write(known.sub(place, line))


{"write": write, "locate": locate}[sys.argv[1]](*sys.argv[2:])
