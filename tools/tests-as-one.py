"""Writes all tests as one source, with its compilation database, for a check that needs to see names alone: reading the
headers again for each test would take minutes. tests-as-one.py BUILD FOLDER"""

import json
import os
import re
import sys

from compilations import compilations, flags

BUILD, FOLDER = sys.argv[1:]


def sources():
    """The tests and what belongs to them, with the words of their compilation."""
    for _, path, words in compilations(BUILD):
        if path.startswith("tests/") and not path.startswith(("tests/fuzz/", "tests/headers/")) and path.endswith(".cpp"):
            yield path, words


def includes(text):
    """What a source includes."""
    return [name for name in re.findall(r'^#include ([<"].+[>"])$', text, re.MULTILINE) if not name.endswith('.moc"')]


def main():
    found = dict(sources())
    texts = {}
    for path in found:
        with open(path, encoding="utf-8") as file:
            text = file.read()
        # The macros of X11's headers do not go together with Qt's names.
        if "<X11/" not in text:
            texts[path] = text
    lines = [f"#include {name}" for name in dict.fromkeys(name for text in texts.values() for name in includes(text))]
    for number, (path, text) in enumerate(sorted(texts.items())):
        copy = os.path.join(FOLDER, path)
        os.makedirs(os.path.dirname(copy), exist_ok=True)
        with open(copy, "w", encoding="utf-8") as file:
            # A template is not instantiated inside of another namespace than its own.
            file.write(re.sub(r"^template class RunnableTests<.*", "", text, flags=re.MULTILINE))
        # Programs define the same names as each other. Operators of the whole program have to be outside of namespaces.
        is_program = re.search(r"\bmain\(|QTEST_\w*MAIN\(|^template class RunnableTests<", text, re.MULTILINE)
        is_whole = not is_program or "operator new(" in text
        lines.append(f'#include "{path}"' if is_whole else f'namespace Program{number} {{\n#include "{path}"\n}}')
        with open(os.path.join(FOLDER, os.path.basename(path)[:-3] + "moc"), "w", encoding="utf-8"):
            pass
    with open(os.path.join(FOLDER, "tests.cpp"), "w", encoding="utf-8") as file:
        file.write("\n".join(lines) + "\n")
    arguments = ["clang++", "-std=c++23", f"-I{FOLDER}", *flags(found.values()), "-w", "-c", "tests.cpp"]
    with open(os.path.join(FOLDER, "compile_commands.json"), "w", encoding="utf-8") as file:
        json.dump([{"directory": FOLDER, "file": "tests.cpp", "arguments": arguments}], file)


main()
