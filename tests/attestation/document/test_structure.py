#!/usr/bin/python3
"""The program's documents meet the conditions of tagged and archivable documents. The check finds planted faults.

Usage: test_structure.py STAGE
"""

import os
import re
import subprocess
import sys
import tempfile

import pikepdf
from conditions import attribute, faults_of, kids_of, Document
from pikepdf import Array, Dictionary, Name, String


# Letters that only the fonts with PostScript outlines have. Two of the letters share one glyph.
POSTSCRIPT_NAME = "ไทย 一⼀丁"


def card_of(specimen, count, regime="01", name="SPECIMEN"):
    """A card file with that many copies of the specimen's first beneficiary."""
    head, first = re.search(r"(.*?<listeBenef>)\s*(<T_AsnBeneficiaire>.*?</T_AsnBeneficiaire>)", specimen, re.DOTALL).groups()
    first = first.replace("<codeRegime>01<", f"<codeRegime>{regime}<").replace("SPECIMEN", name)
    return head + first * count + "</listeBenef></T_AsnDonneesVitale>"


class Maker:
    """Makes documents with the program itself."""

    def __init__(self, stage, folder):
        self.program = os.path.join(stage, "bin", "pelmora")
        self.folder = folder
        with open(os.path.join(stage, "share", "pelmora", "specimen.xml"), encoding="utf-8") as file:
            self.specimen = file.read()

    def document(self, count, has_title=False, **changes):
        card, settings = os.path.join(self.folder, "card.xml"), os.path.join(self.folder, "MORVEL")
        with open(card, "w", encoding="utf-8") as file:
            file.write(card_of(self.specimen, count, **changes))
        os.makedirs(settings, exist_ok=True)
        with open(os.path.join(settings, "Pelmora.conf"), "w", encoding="utf-8") as file:
            file.write(f"[General]\nMVShowRightLabelPrintOption={'true' if has_title else 'false'}\n")
        output = subprocess.run([self.program, "--save", self.folder, card], check=True, capture_output=True, text=True,
                                env={**os.environ, "XDG_CONFIG_HOME": self.folder}).stdout
        return output.strip()


def every_document_keeps_every_condition(maker):
    for count in (1, 3, 11, 12, 20, 99):
        for has_title in (False, True):
            path = maker.document(count, has_title)
            with pikepdf.open(path) as pdf:
                assert faults_of(pdf) == [], (count, has_title, faults_of(pdf))
                headings = Document(pdf).of_type("/H1")
                assert len(headings) == has_title, (count, has_title)
    for changes in ({"regime": "94"}, {"regime": "55"}, {"name": "אברהם Ðuro Đorđe"}, {"name": "محمد الأمين"}, {"name": "X\u0323\u0302"},
                    {"name": "\U0005fff0"}, {"name": POSTSCRIPT_NAME}):
        with pikepdf.open(maker.document(2, **changes)) as pdf:
            assert faults_of(pdf) == [], (changes, faults_of(pdf))


def the_structure_tells_the_page_in_order(maker):
    with pikepdf.open(maker.document(2, has_title=True)) as pdf:
        document = Document(pdf)
        body = document.elements[0][0]
        assert [str(kid.S) for kid in kids_of(body)] == ["/Figure", "/P", "/P", "/P", "/H1", "/Table", "/Table"]
        assert str(kids_of(body)[0].Alt) == "Régime général"
        organism, people = document.of_type("/Table")
        assert [len(kids_of(row)) for row in kids_of(organism)] == [4, 4]
        assert [len(kids_of(row)) for row in kids_of(people)] == [3, 4, 4]
        # Date and rank share their header.
        assert attribute(kids_of(kids_of(people)[0])[2], "/ColSpan") == 2


def the_same_card_gives_the_same_bytes_but_for_the_time(maker):
    def without_time(path):
        with open(path, "rb") as file:
            content = file.read()
        content = re.sub(rb"D:\d{14}[^)]*|\d{4}-\d\d-\d\dT[\d:+Z]*", b"", content)
        return re.sub(rb"/ID \[.*?\]|startxref\s+\d+|\d{10} \d{5} n", b"", content)

    first = without_time(maker.document(3))
    assert first == without_time(maker.document(3))


def contents(pdf, change):
    """Changes the bytes of the page's content."""
    page = pdf.pages[0]
    page.Contents.write(change(page.Contents.read_bytes()))


def element(pdf, kind, index=0):
    return Document(pdf).of_type(kind)[index]


def swapped_rows(pdf):
    row = element(pdf, "/TR")
    del row.K[0]


def text_of_a_code(pdf, new):
    font = pdf.pages[0].Resources.Font.F0
    font.ToUnicode.write(re.sub(rb"<0005> <[0-9A-F]+>", new, font.ToUnicode.read_bytes()))


def metadata_without(pdf, text):
    pdf.Root.Metadata.write(pdf.Root.Metadata.read_bytes().replace(text, b""))


def descendant(pdf, name="/F0"):
    return pdf.pages[0].Resources.Font[name].DescendantFonts[0]


# For each condition, a change of a document that breaks it.
PLANTED = {
    "01-005 painted outside of marks": lambda pdf: contents(pdf, lambda old: old + b"\n0 0 5 5 re f\n"),
    "01-004 artifact or tag inside another":
        lambda pdf: contents(pdf, lambda old: old.replace(b"BT", b"/Artifact BMC EMC BT", 1)),
    "01-003 a mark does not end": lambda pdf: contents(pdf, lambda old: old[:old.rindex(b"EMC")]),
    "01-006 marks and structure disagree":
        lambda pdf: contents(pdf, lambda old: old.replace(b"/MCID 3", b"/MCID 4", 1)),
    "01-006 the parent tree leads elsewhere":
        lambda pdf: pdf.Root.StructTreeRoot.ParentTree.Nums[1].__setitem__(2, element(pdf, "/Table")),
    "01-007 suspects": lambda pdf: pdf.Root.MarkInfo.__setitem__("/Suspects", True),
    "02-001 a type that is not standard": lambda pdf: element(pdf, "/P").__setitem__("/S", Name.Paragraph),
    "02-004 a standard type is mapped":
        lambda pdf: pdf.Root.StructTreeRoot.__setitem__("/RoleMap", Dictionary({"/P": Name.Span})),
    "06-001 no metadata": lambda pdf: pdf.Root.__delitem__("/Metadata"),
    "06-002 PDF/UA is not declared":
        lambda pdf: metadata_without(pdf, b"<pdfuaid:part>1</pdfuaid:part>"),
    "06-003 no title":
        lambda pdf: metadata_without(pdf, "Attestation de droits à l'assurance maladie".encode()),
    "6.7.8 PDF/UA's identifier is not described":
        lambda pdf: metadata_without(pdf, b"<pdfaSchema:namespaceURI>http://www.aiim.org/pdfua/ns/id/</pdfaSchema:namespaceURI>"),
    "6.7.3 two times": lambda pdf: pdf.docinfo.__setitem__("/CreationDate", String("D:20010101000000Z")),
    "personal data in the description": lambda pdf: pdf.docinfo.__setitem__("/Author", String("SPECIMEN")),
    "07-001 the title is not shown": lambda pdf: pdf.Root.__delitem__("/ViewerPreferences"),
    "11-006 no language": lambda pdf: pdf.Root.__delitem__("/Lang"),
    "09-004 a table with something else than rows":
        lambda pdf: element(pdf, "/Table").K.append(pdf.make_indirect(Dictionary(S=Name.P, P=element(pdf, "/Table")))),
    "09-008 rows of different lengths": swapped_rows,
    "15-003 a header without a scope": lambda pdf: element(pdf, "/TH").__delitem__("/A"),
    "15-003 a table without headers": lambda pdf: element(pdf, "/TH").__setitem__("/S", Name.TD),
    "13-004 a figure without a text": lambda pdf: element(pdf, "/Figure").__delitem__("/Alt"),
    "14-003 headings out of order": lambda pdf: element(pdf, "/H1").__setitem__("/S", Name.H2),
    "10-001 a character without a text": lambda pdf: text_of_a_code(pdf, b""),
    "31-028 a text that is none": lambda pdf: text_of_a_code(pdf, b"<0005> <0000>"),
    "31-004 no map from codes to glyphs": lambda pdf: descendant(pdf).__delitem__("/CIDToGIDMap"),
    "31-009 a font is not embedded": lambda pdf: descendant(pdf).FontDescriptor.__delitem__("/FontFile2"),
    "31-013 the set of codes is another": lambda pdf: descendant(pdf).FontDescriptor.CIDSet.write(b"\xff"),
    "31-016 widths disagree": lambda pdf: descendant(pdf).W[1].__setitem__(5, 1),
    "31-030 the missing glyph is shown": lambda pdf: descendant(pdf).CIDToGIDMap.write(
        b"\0" * len(descendant(pdf).CIDToGIDMap.read_bytes())),
    "6.2.2 no colour space": lambda pdf: pdf.Root.__setitem__("/OutputIntents", Array([])),
}


def planted_faults_are_found(maker):
    path = maker.document(3, has_title=True)
    for condition, plant in PLANTED.items():
        with pikepdf.open(path) as pdf:
            plant(pdf)
            assert condition in faults_of(pdf), (condition, faults_of(pdf))


# The same for a font with PostScript outlines.
PLANTED_IN_OUTLINES = {
    "31-001 another encoding": lambda pdf: pdf.pages[0].Resources.Font.F1.__setitem__("/Encoding", Name("/Identity-V")),
    "31-004 no map from codes to glyphs":
        lambda pdf: descendant(pdf, "/F1").__setitem__("/CIDToGIDMap", Name.Identity),
    "31-009 a font is not embedded":
        lambda pdf: descendant(pdf, "/F1").FontDescriptor.__delitem__("/FontFile3"),
    "31-013 the set of codes is another":
        lambda pdf: descendant(pdf, "/F1").FontDescriptor.CIDSet.write(b"\x80"),
    "31-016 widths disagree": lambda pdf: descendant(pdf, "/F1").W[1].__setitem__(1, 1),
}


def planted_faults_of_outlines_are_found(maker):
    path = maker.document(1, name=POSTSCRIPT_NAME)
    for condition, plant in PLANTED_IN_OUTLINES.items():
        with pikepdf.open(path) as pdf:
            plant(pdf)
            assert condition in faults_of(pdf), (condition, faults_of(pdf))


def main():
    with tempfile.TemporaryDirectory() as folder:
        maker = Maker(sys.argv[1], folder)
        for test in (every_document_keeps_every_condition, the_structure_tells_the_page_in_order,
                     the_same_card_gives_the_same_bytes_but_for_the_time, planted_faults_are_found,
                     planted_faults_of_outlines_are_found):
            test(maker)
            print(f"ok: {test.__name__}")


main()
