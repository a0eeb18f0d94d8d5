"""What a build compiles, of its compilation database."""

import json
import os
import re
import shlex


def compilations(build):
    """For each source: its target, its path from here, the words of its compilation. A unity source stands for those that
    it joins."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        commands = json.load(file)
    for command in commands:
        words = shlex.split(command["command"])
        target = re.sub(r"/?CMakeFiles/(.*)\.dir/.*", r"/\1", words[words.index("-o") + 1])
        parts = [command["file"]]
        if re.search(r"/unity_\d+_cxx\.cxx$", command["file"]):
            with open(command["file"], encoding="utf-8") as file:
                parts = re.findall(r'^#include "(.*)"$', file.read(), re.MULTILINE)
        for part in parts:
            yield target, os.path.relpath(part), words


def flags(compilations):
    """The definitions and the folders of headers of all of them; of a macro the first definition."""
    definitions, folders = {}, []
    for words in compilations:
        for word, after in zip(words, [*words[1:], ""]):
            if word.startswith("-D"):
                definitions.setdefault(word.split("=")[0], word)
            elif word.startswith("-I") or word == "-isystem":
                folder = [word, after] if word == "-isystem" else [word]
                if folder not in folders and "/tests/" not in word:
                    folders.append(folder)
    return [*definitions.values(), *(word for folder in folders for word in folder)]
