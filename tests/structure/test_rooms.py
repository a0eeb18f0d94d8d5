"""Each folder uses only what its CMakeLists.txt allows.

test_rooms.py SOURCES; with --picture after it, prints the rooms instead."""

import os
import shutil
import sys
import tempfile
import unittest

import rooms

SOURCES = sys.argv[1]


class Sources(unittest.TestCase):
    def test_every_folder_includes_only_what_it_says(self):
        self.assertEqual(rooms.faults(rooms.rooms(SOURCES)), [])

    def test_the_rooms_are_those_that_the_documentation_lists(self):
        with open(os.path.join(SOURCES, "docs", "architecture.md"), encoding="utf-8") as file:
            text = file.read()
        self.assertEqual([path for path in rooms.rooms(SOURCES) if f"`{path}/`" not in text], [])


class Rule(unittest.TestCase):
    """Each kind of fault is found in a made-up tree."""

    def setUp(self):
        self.root = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.root)
        self.write("platform/CMakeLists.txt", "# Below.\n# May use: Qt Core.\n")
        self.write("platform/Error.h", "#include <QString>\n")
        self.write("card/CMakeLists.txt", "# Above.\n# May use: platform.\n")
        self.write("card/Card.cpp", '#include "card/Card.h"\n#include "platform/Error.h"\n')

    def write(self, path, text):
        path = os.path.join(self.root, path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)

    def faults(self):
        return rooms.faults(rooms.rooms(self.root))

    def test_rooms_that_use_only_named_rooms_have_no_fault(self):
        self.assertEqual(self.faults(), [])

    def test_an_include_of_a_room_that_is_not_named_is_a_fault(self):
        self.write("platform/Wrong.cpp", '#include "card/Card.h"\n')
        self.assertEqual(self.faults(), ["platform/Wrong.cpp includes from card, which platform may not use",
                                         "a circle: card -> platform -> card"])

    def test_a_cycle_is_a_fault_even_when_both_rooms_name_each_other(self):
        self.write("platform/CMakeLists.txt", "# Below.\n# May use: card.\n")
        self.write("platform/Wrong.cpp", '#include "card/Card.h"\n')
        self.assertEqual(self.faults(), ["a circle: card -> platform -> card"])

    def test_an_include_without_its_folder_is_a_fault(self):
        self.write("card/Wrong.cpp", '#include "Card.h"\n')
        self.assertEqual(self.faults(), ["card/Wrong.cpp includes a file without its folder"])

    def test_too_many_modules_are_a_fault(self):
        for number in range(rooms.MOST_MODULES):
            self.write(f"card/Module{number}.h", "")
        self.assertEqual(self.faults(), ["card has 21 modules, more than 20"])

    def test_a_folder_without_a_purpose_is_a_fault(self):
        self.write("card/CMakeLists.txt", "add_library(card)\n")
        self.assertEqual(self.faults(), ["card/CMakeLists.txt does not open with what the folder is for",
                                         "card/CMakeLists.txt does not say what the folder may use",
                                         "card/Card.cpp includes from platform, which card may not use"])

    def test_a_name_that_is_not_a_room_is_a_fault(self):
        self.write("card/CMakeLists.txt", "# Above.\n# May use: platform, cards.\n")
        self.assertEqual(self.faults(), ["card may use cards, which is neither a folder nor a library that is known"])


if __name__ == "__main__":
    if "--picture" in sys.argv:
        print("\n".join(rooms.picture(rooms.rooms(SOURCES))))
    else:
        unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
