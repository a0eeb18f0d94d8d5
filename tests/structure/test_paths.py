"""The files named in docs/architecture.md exist. test_paths.py SOURCES"""

import os
import re
import sys
import unittest

SOURCES = sys.argv.pop(1)
LONGEST_WAY = 35


def section(title):
    """The text of a section, or subsection, of docs/architecture.md."""
    with open(os.path.join(SOURCES, "docs", "architecture.md"), encoding="utf-8") as file:
        text = file.read()
    return re.search(rf"^#+ {title}\n(.*?)(?=^#)", text, re.MULTILINE | re.DOTALL).group(1)


class Paths(unittest.TestCase):
    def missing(self, names):
        return [name for name in names if not os.path.exists(os.path.join(SOURCES, name))]

    def test_the_list_of_files_has_existing_files_once_and_is_short(self):
        way = re.findall(r"^\d+\. `([^`]+)`", section("File by file"), re.MULTILINE)
        self.assertEqual(self.missing(way), [])
        self.assertEqual(len(set(way)), len(way))
        self.assertLessEqual(len(way), LONGEST_WAY)
        self.assertGreater(len(way), 0)

    def test_the_recipes_name_files_that_exist(self):
        names = re.findall(r"`([a-z]+/[^`]+)`", section("Recipes"))
        self.assertEqual(self.missing(names), [])
        self.assertGreater(len(names), 0)


if __name__ == "__main__":
    unittest.main()
