"""Writes the shipped sources of each part of the program (app/, card/ and so on) as one source, with their compilation
database, for checks that look at the main source alone: reading the headers again for each source takes most of the time. A
finding's place is then to be told in the sources themselves.

sources-as-one.py write BUILD FOLDER      BUILD has unity sources
sources-as-one.py locate FOLDER <FINDINGS"""

import collections
import json
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

from compilations import compilations, flags

SHIPPED = re.compile(r"(platform|support|update|card|service|attestation|prefs|app)/.*\.cpp$")


def targets(build):
    """The shipped sources of each target, with the words of their compilation."""
    found = {}
    for target, source, words in compilations(build):
        if SHIPPED.match(source) and not target.startswith("tests/"):
            found.setdefault(target, (words, []))[1].append(source)
    return found


def has_main(sources):
    return any(re.search(r"^int main\(", open(source, encoding="utf-8").read(), re.MULTILINE) for source in sources)


def parts(build):
    """The targets of each part; of several programs each but the first is a part of its own."""
    found, programs = collections.defaultdict(list), set()
    for target, (words, sources) in sorted(targets(build).items()):
        part = target.split("/")[0]
        if has_main(sources):
            if part in programs:
                part = target.replace("/", "_")
            programs.add(part)
        found[part].append((target.replace("/", "_"), words, sources))
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
    return "\n".join(lines) + "\n", starts


def entry(build, path, compiled):
    """How that file is compiled with the words of all of them, without sanitizers."""
    first = [word for word in compiled[0] if re.match(r"-(std=|f(?!sanitize)|W|O|g)", word)]
    return {"directory": os.path.abspath(build), "file": path,
            "arguments": ["c++", *flags(compiled), *first, "-c", path]}


def compiles(entry):
    command = ["clang++-19", *entry["arguments"][1:], "-fsyntax-only", "-w"]
    return subprocess.run(command, cwd=entry["directory"], capture_output=True, check=False).returncode == 0


def write(build, folder):
    places = {}

    def one(name, found):
        """The targets' sources as one."""
        path = os.path.join(folder, name + ".cpp")
        text, places[path] = joined([source for _, _, sources in found for source in sources])
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        return entry(build, path, [words for _, words, _ in found])

    found = parts(build)
    entries = {name: one(name, targets) for name, targets in found.items()}
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        whole = dict(zip(entries, pool.map(compiles, entries.values())))
    for name in (name for name, is_whole in whole.items() if not is_whole and len(found[name]) > 1):
        # Sources of two targets have the same name for two things.
        print(f"{name}/: each target by itself", file=sys.stderr)
        os.remove(entries.pop(name)["file"])
        entries.update((target[0], one(target[0], [target])) for target in found[name])
    # The longest first, so that the processors end together.
    longest_first = sorted(entries.values(), key=lambda known: -os.path.getsize(known["file"]))
    for name, content in (("compile_commands", longest_first), ("places", places)):
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
