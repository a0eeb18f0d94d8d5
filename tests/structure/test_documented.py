"""Options, errors and environment variables are documented. test_documented.py SOURCES

Settings are compared with docs/settings.md in tests/prefs/settings.
"""

import glob
import os
import re
import shutil
import sys
import tempfile
import unittest

SOURCES = sys.argv.pop(1)
SHIPPED = ["app", "attestation", "card", "include", "platform", "prefs", "service", "support", "update"]
COMMAND_LINE = "app/models/CommandLine.cpp"
DOOR = "app/door/Door.h"
SERVICE = "service/ServiceCommandLine.cpp"
ERRORS = "card/PelmoraError.cpp"
HELP_PAGE = "resources/help/Help.html"
GUIDE = "docs/guide.md"
ENVIRONMENT_READER = re.compile(r"\b(?:qEnvironmentVariable\w*|qgetenv|(?:secure_)?getenv)\(\s*([^),]*)")


def read(sources, path):
    with open(os.path.join(sources, path), encoding="utf-8") as file:
        return file.read()


def man_pages(sources):
    pages = [os.path.relpath(path, sources) for path in glob.glob(os.path.join(sources, "packaging", "pelmora*.1"))]
    assert pages
    return pages


def help_text(source):
    return source[source.index("helpText()"):]


def options(sources):
    """The options of pelmora: those that are parsed, and those that decide which program runs."""
    source = read(sources, COMMAND_LINE)
    constants = dict(re.findall(r'QLatin1StringView (\w+Option)\{"([^"]+)"\}', source))
    added = re.search(r"parser\.addOptions\(\{(.*?)\n    \}\);", source, re.DOTALL).group(1)
    rows = [row for row in added.strip().splitlines() if row.strip()]
    names = {constants[name] for name in re.findall(r"\b(\w+Option)\b", added) if name in constants}
    # An option without a constant would not be found here.
    assert len(rows) == len(names) == len(constants), (rows, constants)
    return names | set(re.findall(r'"--([a-z-]+)=?"', read(sources, DOOR)))


def service_options(sources):
    source = read(sources, SERVICE)
    return set(re.findall(r'"--([a-z-]+)=?"', source[:source.index("helpText()")]))


def undocumented_options(sources):
    undocumented = []
    for name in sorted(options(sources)):
        if f"--{name}" not in help_text(read(sources, COMMAND_LINE)):
            undocumented.append(f"{COMMAND_LINE}, helpText(): --{name}")
        for page in man_pages(sources):
            if not re.search(rf"Fl Fl {name}\b(?!-)", read(sources, page)):
                undocumented.append(f"{page}: --{name}")
    for name in sorted(service_options(sources)):
        for path, text in ((SERVICE, help_text(read(sources, SERVICE))), (GUIDE, read(sources, GUIDE))):
            if not re.search(rf"--{name}\b(?!-)", text):
                undocumented.append(f"{path}: --{name}")
    return undocumented


def error_codes(sources):
    return re.findall(r"pelmoraError\(\s*(-\d+)", read(sources, ERRORS))


def undocumented_errors(sources):
    undocumented = []
    for code in error_codes(sources):
        if f'id="erreur{code}"' not in read(sources, HELP_PAGE):
            undocumented.append(f"{HELP_PAGE}: {code}")
        if f"\n| {code} |" not in read(sources, GUIDE):
            undocumented.append(f"{GUIDE}: {code}")
    return undocumented


def sources_of(sources):
    for folder in SHIPPED:
        for path in glob.glob(os.path.join(sources, folder, "**", "*.*"), recursive=True):
            if path.endswith((".cpp", ".h", ".c")):
                yield os.path.relpath(path, sources)


def variables(sources):
    """Environment variables that a source reads, by name or through a constant of the same source."""
    found = set()
    for path in sources_of(sources):
        text = read(sources, path)
        for argument in ENVIRONMENT_READER.findall(text):
            if '"' not in argument:
                argument = re.search(rf'\b{argument.strip()} ?[={{] ?"[^"]*"', text).group(0)
            found.add(re.search(r'"([^"]*)"', argument).group(1))
    return found


def undocumented_variables(sources):
    undocumented = []
    for name in sorted(variables(sources)):
        if f"`{name}`" not in read(sources, GUIDE):
            undocumented.append(f"{GUIDE}: {name}")
        if name.startswith("PELMORA_"):
            undocumented += [f"{page}: {name}" for page in man_pages(sources) if f"Ev {name}" not in read(sources, page)]
    return undocumented


class Documented(unittest.TestCase):
    def test_every_option_is_in_the_help_and_in_the_manuals(self):
        self.assertEqual(undocumented_options(SOURCES), [])

    def test_every_error_is_on_the_help_page_and_in_the_guide(self):
        self.assertEqual(undocumented_errors(SOURCES), [])

    def test_every_environment_variable_is_in_the_guide(self):
        self.assertEqual(undocumented_variables(SOURCES), [])


class Breaks(unittest.TestCase):
    """A copy of the sources with something that is not documented."""

    def setUp(self):
        self.copy = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.copy)
        for path in [COMMAND_LINE, DOOR, SERVICE, ERRORS, HELP_PAGE, GUIDE, *man_pages(SOURCES)]:
            os.makedirs(os.path.dirname(os.path.join(self.copy, path)), exist_ok=True)
            shutil.copy(os.path.join(SOURCES, path), os.path.join(self.copy, path))

    def change(self, path, before, after):
        text = read(self.copy, path)
        self.assertIn(before, text)
        with open(os.path.join(self.copy, path), "w", encoding="utf-8") as file:
            file.write(text.replace(before, after, 1))

    def test_a_new_option_is_found(self):
        self.change(COMMAND_LINE, "constexpr QLatin1StringView", 'constexpr QLatin1StringView quietOption{"quiet"};\n'
                    "constexpr QLatin1StringView")
        self.change(COMMAND_LINE, "parser.addOptions({\n", "parser.addOptions({\n"
                    "        QCommandLineOption(QString(quietOption)),\n")
        pages = [f"{page}: --quiet" for page in man_pages(SOURCES)]
        self.assertEqual(undocumented_options(self.copy), [f"{COMMAND_LINE}, helpText(): --quiet", *pages])

    def test_an_option_without_a_constant_is_reported(self):
        self.change(COMMAND_LINE, "parser.addOptions({\n", "parser.addOptions({\n        {u\"quiet\"_s},\n")
        self.assertRaises(AssertionError, undocumented_options, self.copy)

    def test_a_new_option_of_the_card_service_is_found(self):
        self.change(SERVICE, '"--diagnose"', '"--mend"')
        self.assertEqual(undocumented_options(self.copy), [f"{SERVICE}: --mend", f"{GUIDE}: --mend"])

    def test_a_new_error_is_found(self):
        self.change(ERRORS, "pelmoraError(-40", "pelmoraError(-41")
        self.assertEqual(undocumented_errors(self.copy), [f"{HELP_PAGE}: -41", f"{GUIDE}: -41"])

    def test_a_new_environment_variable_is_found_by_its_name_and_through_a_constant(self):
        os.makedirs(os.path.join(self.copy, "support"))
        with open(os.path.join(self.copy, "support", "Speed.cpp"), "w", encoding="utf-8") as file:
            file.write('constexpr auto pace = "PELMORA_PACE";\nauto a = qgetenv(pace);\n'
                       'auto b = qEnvironmentVariableIsSet("SPEED");\n')
        pages = [f"{page}: PELMORA_PACE" for page in man_pages(SOURCES)]
        self.assertEqual(undocumented_variables(self.copy), [f"{GUIDE}: PELMORA_PACE", *pages, f"{GUIDE}: SPEED"])


if __name__ == "__main__":
    unittest.main()
