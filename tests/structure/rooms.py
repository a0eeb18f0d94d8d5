"""The folders of the sources ("rooms"): what each may use, and what it includes."""

import os
import re

TOPS = ("platform", "support", "update", "card", "service", "prefs", "attestation", "app")
MOST_MODULES = 20
# Libraries that a room may use.
LIBRARIES = {"Qt Core", "Qt Gui", "Qt Widgets", "Qt Svg", "Qt Print Support", "Qt DBus", "Qt Network", "XCB", "PC/SC", "libcups",
             "FriBidi", "HarfBuzz", "fontconfig", "libplist", "libseccomp", "libsodium", "libxml2", "libdeflate", "fmt", "nothing"}


class Room:
    """A folder with sources."""

    def __init__(self, root, path):
        folder = os.path.join(root, path)
        self.path = path
        self.modules = set()
        self.includes = {}  # folder -> the files that include from it
        self.bare = []      # includes without a folder
        for name in sorted(os.listdir(folder)):
            module, suffix = os.path.splitext(name)
            if suffix not in (".h", ".cpp"):
                continue
            self.modules.add(module)
            with open(os.path.join(folder, name), encoding="utf-8") as file:
                for included in re.findall(r'^#include "([^"]+)"', file.read(), re.MULTILINE):
                    # Headers made by uic are in the build folder.
                    if os.path.basename(included).startswith("ui_"):
                        continue
                    where = os.path.dirname(included)
                    if not where:
                        self.bare.append(f"{path}/{name}")
                    elif where != path:
                        self.includes.setdefault(where, []).append(f"{path}/{name}")
        self.purpose, self.may_use = _header(os.path.join(folder, "CMakeLists.txt"))


def _header(path):
    """The first lines of a room's CMakeLists.txt: its purpose, and the set of rooms that it may use."""
    purpose, may_use = "", None
    try:
        with open(path, encoding="utf-8") as file:
            lines = [line[1:].strip() for line in _comment(file)]
    except FileNotFoundError:
        return purpose, may_use
    text = " ".join(lines)
    purpose, found, names = text.partition("May use:")
    if found:
        may_use = {name.strip() for name in names.rstrip(".").split(",")}
    return purpose.strip(), may_use


def _comment(file):
    for line in file:
        if not line.startswith("#"):
            return
        yield line


def rooms(root):
    """All rooms by their paths."""
    found = {}
    for top in TOPS:
        for folder, _, names in os.walk(os.path.join(root, top)):
            if any(name.endswith((".h", ".cpp")) for name in names):
                path = os.path.relpath(folder, root)
                found[path] = Room(root, path)
    return found


def faults(found):
    """The faults of the rooms, one line each."""
    lines = []
    for room in found.values():
        if not room.purpose:
            lines.append(f"{room.path}/CMakeLists.txt does not open with what the folder is for")
        if room.may_use is None:
            lines.append(f"{room.path}/CMakeLists.txt does not say what the folder may use")
        lines += [f"{room.path} may use {name}, which is neither a folder nor a library that is known"
                  for name in sorted((room.may_use or set()) - LIBRARIES - set(found) - {"include/pelmora"})]
        if len(room.modules) > MOST_MODULES:
            lines.append(f"{room.path} has {len(room.modules)} modules, more than {MOST_MODULES}")
        lines += [f"{file} includes a file without its folder" for file in room.bare]
        for where, files in sorted(room.includes.items()):
            if where not in (room.may_use or set()):
                lines += [f"{file} includes from {where}, which {room.path} may not use" for file in files]
    return lines + [f"a circle: {' -> '.join(circle)}" for circle in circles(found)]


def circles(found):
    """The first cycle of includes, if there is one."""
    done, path = set(), []

    def visit(name):
        if name in path:
            return [*path[path.index(name):], name]
        if name in done or name not in found:
            return None
        path.append(name)
        for where in sorted(found[name].includes):
            circle = visit(where)
            if circle:
                return circle
        path.pop()
        done.add(name)
        return None

    for name in sorted(found):
        circle = visit(name)
        if circle:
            return [circle]
    return []


def picture(found):
    """The rooms sorted by their dependencies: modules, and arrows to other rooms."""
    order = []

    def visit(name):
        if name in order or name not in found:
            return
        for where in sorted(found[name].includes):
            visit(where)
        order.append(name)

    for name in sorted(found):
        visit(name)
    return [f"{name}: {len(found[name].modules)} modules -> "
            + (", ".join(where for where in order if where in found[name].includes) or "nothing") for name in order]
