"""The conditions of tagged and archivable documents that a program can check, for a document of one page.

faults_of(pdf) lists the conditions that a document breaks, by their names. It checks the conditions of PDF/UA-1 that a
page of texts, tables and a picture can break, and the conditions of PDF/A-1 that the PDF/A validator does not check.
"""

import io
import re
from xml.etree import ElementTree

import pikepdf
from fontTools.cffLib import CFFFontSet
from fontTools.pens.basePen import NullPen
from fontTools.ttLib import TTFont
from pikepdf import Name

STANDARD_TYPES = {"/Document", "/H1", "/H2", "/H3", "/H4", "/H5", "/H6", "/P", "/Figure", "/Table", "/TR", "/TH", "/TD",
                  "/THead", "/TBody", "/TFoot", "/Span", "/Sect", "/Div", "/Art", "/Caption"}
PAINTING = {"f", "F", "f*", "B", "B*", "b", "b*", "S", "s", "Tj", "TJ", "'", '"', "Do", "sh", "EI", "INLINE IMAGE"}
NAMESPACES = {"rdf": "http://www.w3.org/1999/02/22-rdf-syntax-ns#", "dc": "http://purl.org/dc/elements/1.1/",
              "xmp": "http://ns.adobe.com/xap/1.0/", "pdf": "http://ns.adobe.com/pdf/1.3/",
              "pdfaid": "http://www.aiim.org/pdfa/ns/id/", "pdfuaid": "http://www.aiim.org/pdfua/ns/id/",
              "schema": "http://www.aiim.org/pdfa/ns/schema#"}


class Document:
    """The parts of a document that the conditions are about."""

    def __init__(self, pdf):
        self.pdf = pdf
        self.page = pdf.pages[0]
        self.elements = []  # (element, its parent), in reading order
        root = pdf.Root.get("/StructTreeRoot")
        if root is not None:
            self._walk(root)

    def _walk(self, parent):
        for kid in kids_of(parent):
            if isinstance(kid, pikepdf.Dictionary):
                self.elements.append((kid, parent))
                self._walk(kid)

    def of_type(self, *types):
        return [element for element, _ in self.elements if str(element.get("/S")) in types]


def kids_of(element):
    kids = element.get("/K")
    if kids is None:
        return []
    return list(kids) if isinstance(kids, pikepdf.Array) else [kids]


def attribute(element, name):
    """The value of an attribute, from the dictionary or the dictionaries that an element has."""
    attributes = element.get("/A")
    if attributes is None:
        return None
    for dictionary in attributes if isinstance(attributes, pikepdf.Array) else [attributes]:
        if name in dictionary:
            return dictionary[name]
    return None


def marks(document):
    """Everything painted is an artifact or is tagged, never both; each tag is in the structure exactly once."""
    stack, numbers = [], []
    for operands, operator in pikepdf.parse_content_stream(document.page):
        name = str(operator)
        if name in ("BMC", "BDC"):
            properties = operands[1] if len(operands) > 1 else {}
            if isinstance(properties, pikepdf.Name):
                properties = document.page.Resources.Properties[properties]
            number = properties.get("/MCID") if len(operands) > 1 else None
            kind = "artifact" if operands[0] == Name.Artifact else "tagged" if number is not None else "other"
            if kind != "other" and any(outer != "other" for outer in stack):
                yield "01-004 artifact or tag inside another"
            if number is not None:
                numbers.append(int(number))
            stack.append(kind)
        elif name == "EMC":
            if not stack:
                yield "01-003 a mark ends that did not begin"
            else:
                stack.pop()
        elif name in PAINTING and not any(kind != "other" for kind in stack):
            yield "01-005 painted outside of marks"
    if stack:
        yield "01-003 a mark does not end"

    leaves = [int(kid) for element, _ in document.elements for kid in kids_of(element) if isinstance(kid, int)]
    if sorted(leaves) != sorted(numbers) or len(set(leaves)) != len(leaves):
        yield "01-006 marks and structure disagree"
    tree = document.pdf.Root.get("/StructTreeRoot")
    parents = tree.ParentTree.Nums[1] if tree is not None else []
    for element, _ in document.elements:
        for kid in kids_of(element):
            if isinstance(kid, int) and (kid >= len(parents) or parents[kid].objgen != element.objgen):
                yield "01-006 the parent tree leads elsewhere"
    if document.page.get("/StructParents") != 0:
        yield "01-006 the page is not in the parent tree"
    if document.pdf.Root.get("/MarkInfo", {}).get("/Marked") is not True:
        yield "06 not declared as tagged"
    if document.pdf.Root.get("/MarkInfo", {}).get("/Suspects") is True:
        yield "01-007 suspects"


def types(document):
    roles = document.pdf.Root.get("/StructTreeRoot", {}).get("/RoleMap", {})
    for element, parent in document.elements:
        if str(element.get("/S")) not in STANDARD_TYPES:
            yield "02-001 a type that is not standard"
        if element.P.objgen != parent.objgen:
            yield "09 an element's parent is another"
    if set(str(role) for role in roles) & STANDARD_TYPES:
        yield "02-004 a standard type is mapped"
    if not document.elements or document.elements[0][0].get("/S") != Name.Document:
        yield "01 the structure does not begin with a document"


def metadata(document):
    stream = document.pdf.Root.get("/Metadata")
    if stream is None:
        yield "06-001 no metadata"
        return
    if "/Filter" in stream:
        yield "6.7.2 the metadata is compressed"
    root = ElementTree.fromstring(stream.read_bytes().decode("utf-8").lstrip("\ufeff"))

    def text(path):
        found = root.find(f".//{path}", NAMESPACES)
        return (found.text or "").strip() if found is not None else ""

    title = text("dc:title/rdf:Alt/rdf:li")
    if not title:
        yield "06-003 no title"
    if text("pdfuaid:part") != "1":
        yield "06-002 PDF/UA is not declared"
    if (text("pdfaid:part"), text("pdfaid:conformance")) != ("1", "A"):
        yield "6.7.11 PDF/A-1a is not declared"
    if "http://www.aiim.org/pdfua/ns/id/" not in [found.text for found in root.iter(f"{{{NAMESPACES['schema']}}}namespaceURI")]:
        yield "6.7.8 PDF/UA's identifier is not described"

    information = document.pdf.docinfo
    if str(information.get("/Title", "")) != title:
        yield "6.7.3 two titles"
    if str(information.get("/Creator", "")) != text("xmp:CreatorTool") or str(information.get("/Producer", "")) != text("pdf:Producer"):
        yield "6.7.3 two programs"
    digits = re.sub(r"\D", "", text("xmp:CreateDate"))[:14]
    if re.sub(r"\D", "", str(information.get("/CreationDate", "")))[:14] != digits or len(digits) != 14:
        yield "6.7.3 two times"
    if set(information.keys()) - {"/Title", "/Creator", "/Producer", "/CreationDate", "/ModDate"}:
        yield "personal data in the description"


def catalog(document):
    root = document.pdf.Root
    if root.get("/ViewerPreferences", {}).get("/DisplayDocTitle") is not True:
        yield "07-001 the title is not shown"
    if not re.fullmatch(r"fr(-FR)?", str(root.get("/Lang", ""))):
        yield "11-006 no language"
    if document.pdf.is_encrypted:
        yield "26-001 encrypted"
    if document.pdf.pdf_version != "1.4":
        yield "6.1.2 not PDF 1.4"
    intents = root.get("/OutputIntents", [])
    if len(intents) != 1 or intents[0].S != Name.GTS_PDFA1 or intents[0].DestOutputProfile.N != 3:
        yield "6.2.2 no colour space"
    if "/ID" not in document.pdf.trailer:
        yield "6.1.3 no identifier"


def tables(document):
    for element, parent in document.elements:
        kind, above = str(element.get("/S")), str(parent.get("/S"))
        if kind == "/TR" and above not in ("/Table", "/THead", "/TBody", "/TFoot"):
            yield "09-005 a row outside of a table"
        if kind in ("/TH", "/TD") and above != "/TR":
            yield "09-006 a cell outside of a row"
        inside = {str(kid.get("/S")) for kid in kids_of(element) if isinstance(kid, pikepdf.Dictionary)}
        if kind == "/Table" and not inside <= {"/TR", "/THead", "/TBody", "/TFoot"}:
            yield "09-004 a table with something else than rows"
        if kind == "/TR" and not inside <= {"/TH", "/TD"}:
            yield "09-006 a row with something else than cells"
    for table in document.of_type("/Table"):
        rows = [row for row in kids_of(table) if row.get("/S") == Name.TR]
        widths = {sum(int(attribute(cell, "/ColSpan") or 1) for cell in kids_of(row)) for row in rows}
        if len(widths) != 1:
            yield "09-008 rows of different lengths"
        if not rows or {str(cell.get("/S")) for cell in kids_of(rows[0])} != {"/TH"}:
            yield "15-003 a table without headers"
    for header in document.of_type("/TH"):
        if attribute(header, "/Scope") != Name.Column:
            yield "15-003 a header without a scope"


def figures_and_headings(document):
    for figure in document.of_type("/Figure"):
        if not str(figure.get("/Alt", figure.get("/ActualText", ""))).strip():
            yield "13-004 a figure without a text"
    levels = [int(str(heading.S)[2:]) for heading in document.of_type("/H1", "/H2", "/H3", "/H4", "/H5", "/H6")]
    if levels and (levels[0] != 1 or any(after > before + 1 for before, after in zip(levels, levels[1:]))):
        yield "14-003 headings out of order"


def unicode_map(font):
    """The Unicode text of each code."""
    stream = font.get("/ToUnicode")
    if stream is None:
        return {}
    text = stream.read_bytes().decode("ascii")
    pairs = re.findall(r"^<([0-9A-F]{4})> <([0-9A-F]*)>$", text, re.MULTILINE)
    return {int(code, 16): bytes.fromhex(units).decode("utf-16-be") for code, units in pairs}


def shown_codes(document):
    """For each font, the codes that the page shows."""
    codes, font = {}, None
    for operands, operator in pikepdf.parse_content_stream(document.page):
        if str(operator) == "Tf":
            font = str(operands[0])
        elif str(operator) in ("Tj", "TJ"):
            texts = operands[0] if str(operator) == "TJ" else [operands[0]]
            for text in texts:
                if isinstance(text, pikepdf.String):
                    raw = bytes(text)
                    codes.setdefault(font, set()).update(raw[i] * 256 + raw[i + 1] for i in range(0, len(raw), 2))
    return codes


def fonts(document):
    embedded = document.page.Resources.get("/Font", {})
    for name, codes in shown_codes(document).items():
        font = embedded[name]
        cid_font = font.DescendantFonts[0]
        descriptor = cid_font.FontDescriptor
        texts = unicode_map(font)
        if font.Encoding != Name("/Identity-H"):
            yield "31-001 another encoding"
        information = cid_font.CIDSystemInfo
        if (str(information.Registry), str(information.Ordering)) != ("Adobe", "Identity"):
            yield "31-001 codes of another system"
        # A font with PostScript outlines contains the numbers of its glyphs, so it has no map.
        is_truetype = cid_font.Subtype == Name.CIDFontType2
        if ("/CIDToGIDMap" in cid_font) != is_truetype:
            yield "31-004 no map from codes to glyphs"
            continue
        if ("/FontFile2" if is_truetype else "/FontFile3") not in descriptor:
            yield "31-009 a font is not embedded"
            continue
        if not re.fullmatch(r"/[A-Z]{6}\+.+", str(descriptor.FontName)) or font.BaseFont != descriptor.FontName:
            yield "a subset is not named as one"
        if any(not texts.get(code) for code in codes):
            yield "10-001 a character without a text"
        if any(set(text) & {"\0", "\ufeff", "\ufffe"} for text in texts.values()):
            yield "31-028 a text that is none"
        if 0 in codes:
            yield "31-030 the missing glyph is shown"
        yield from measures(cid_font, codes)


def truetype_advances(cid_font):
    """The advance of each code, in thousandths of the font's size; None for the missing glyph."""
    glyph_map = bytes(cid_font.CIDToGIDMap.read_bytes())
    face = TTFont(io.BytesIO(cid_font.FontDescriptor.FontFile2.read_bytes()))
    order, advances, units = face.getGlyphOrder(), face["hmtx"], face["head"].unitsPerEm
    glyphs = [glyph_map[i] * 256 + glyph_map[i + 1] for i in range(0, len(glyph_map), 2)]
    return {code: advances[order[glyph]][0] * 1000 / units if 0 < glyph < len(order) else None
            for code, glyph in enumerate(glyphs)}


def postscript_advances(cid_font):
    """The same for PostScript outlines, which contain the advances."""
    file = CFFFontSet()
    file.decompile(io.BytesIO(cid_font.FontDescriptor.FontFile3.read_bytes()), None)
    font, advances = file[0], {0: None}
    for name in font.charset[1:]:
        outline, kind = font.CharStrings.getItemAndSelector(name)
        outline.draw(NullPen())
        matrix = getattr(font.FDArray[kind], "FontMatrix", font.FontMatrix)
        advances[int(name.removeprefix("cid"))] = outline.width * matrix[0] * 1000
    return advances


def measures(cid_font, codes):
    is_truetype = cid_font.Subtype == Name.CIDFontType2
    advances = truetype_advances(cid_font) if is_truetype else postscript_advances(cid_font)
    declared = [float(width) for width in cid_font.W[1]]
    bits = cid_font.FontDescriptor.CIDSet.read_bytes()
    for code in codes:
        if advances.get(code) is None:
            yield "31-030 the missing glyph is shown"
        elif abs(advances[code] - declared[code]) > 0.01:
            yield "31-016 widths disagree"
    present = {code for code in range(len(bits) * 8) if bits[code // 8] & (0x80 >> (code % 8))}
    if present != set(advances):
        yield "31-013 the set of codes is another"


def faults_of(pdf):
    """The conditions that the document breaks, sorted, each once."""
    document = Document(pdf)
    conditions = (marks, types, metadata, catalog, tables, figures_and_headings, fonts)
    return sorted({fault for condition in conditions for fault in condition(document)})
