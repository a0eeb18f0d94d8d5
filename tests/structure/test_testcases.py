"""Every class of tests derives from TestCase, which fails on unannounced warnings. test_testcases.py SOURCES"""

import os
import re
import shutil
import sys
import tempfile
import unittest

SOURCES = sys.argv.pop(1)


def texts(root):
    """The C++ sources below a folder, by their paths."""
    found = {}
    for folder, _, names in os.walk(root):
        for name in sorted(names):
            if name.endswith((".h", ".cpp")):
                path = os.path.join(folder, name)
                with open(path, encoding="utf-8") as file:
                    found[os.path.relpath(path, root)] = file.read()
    return found


def bases(text):
    """The public base of each class."""
    return dict(re.findall(r"^class (\w+)(?: final)?\s*: public (\w+)", text, re.MULTILINE))


def faults(root):
    """What is wrong with the test programs, a line each."""
    sources = texts(root)
    shared = {name: base for path, text in sources.items() if path.endswith(".h") for name, base in bases(text).items()}
    lines = []
    for path, text in sources.items():
        if not re.fullmatch(r"tst_\w+\.cpp", os.path.basename(path)):
            continue
        known = shared | bases(text)
        runnable = set(re.findall(r"^template class RunnableTests<(\w+),", text, re.MULTILINE))
        written = set(re.findall(r"\bclass (tst_\w+)", text))
        if not runnable:
            lines.append(f"{path} has no class of tests")
        lines += [f"{path}: {name} is not run" for name in sorted(written - runnable)]
        for name in sorted(written | runnable):
            base = name
            while base in known and base != "TestCase":
                base = known[base]
            if base != "TestCase":
                lines.append(f"{path}: {name} does not derive from TestCase")
    return lines


def run(name, base):
    """A class of tests that its program can run."""
    return f"class {name} : public {base}\ntemplate class RunnableTests<{name.split()[0]}, void>;\n"


class Sources(unittest.TestCase):
    def test_every_class_of_tests_derives_from_test_case(self):
        self.assertEqual(faults(os.path.join(SOURCES, "tests")), [])


class Rule(unittest.TestCase):
    """Each kind of fault is found in an example with it."""

    def setUp(self):
        self.root = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.root)
        self.write("TestCase.h", "class TestCase : public QObject\n")
        self.write("PaneTest.h", "class PaneTest : public TestCase\n")
        self.write("tst_pane.cpp", "class Fake : public QObject\n" + run("tst_Pane final", "PaneTest"))

    def write(self, name, text):
        with open(os.path.join(self.root, name), "w", encoding="utf-8") as file:
            file.write(text)

    def test_a_class_may_derive_over_another_one(self):
        self.assertEqual(faults(self.root), [])

    def test_a_class_with_another_base_is_a_fault(self):
        self.write("tst_card.cpp", run("tst_Card", "QObject"))
        self.assertEqual(faults(self.root), ["tst_card.cpp: tst_Card does not derive from TestCase"])

    def test_a_class_that_is_run_under_another_name_is_a_fault_too(self):
        self.write("tst_card.cpp", run("CardTest", "QObject"))
        self.assertEqual(faults(self.root), ["tst_card.cpp: CardTest does not derive from TestCase"])

    def test_a_base_that_does_not_derive_from_test_case_is_a_fault_of_its_classes(self):
        self.write("PaneTest.h", "class PaneTest : public QObject\n")
        self.assertEqual(faults(self.root), ["tst_pane.cpp: tst_Pane does not derive from TestCase"])

    def test_a_class_that_is_not_run_is_a_fault(self):
        self.write("tst_card.cpp", "class tst_Card : public TestCase\n" + run("tst_CardFile", "TestCase"))
        self.assertEqual(faults(self.root), ["tst_card.cpp: tst_Card is not run"])

    def test_a_source_without_a_class_of_tests_is_a_fault(self):
        self.write("tst_card.cpp", "int main()\n")
        self.assertEqual(faults(self.root), ["tst_card.cpp has no class of tests"])


if __name__ == "__main__":
    unittest.main()
