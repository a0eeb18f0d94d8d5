#include "attestation/document/PdfStructure.h"

#include "attestation/document/PdfNumber.h"
#include "attestation/page/AttestationContent.h"
#include "attestation/page/SchemeLogos.h"

#include <qpdf/QPDF.hh>

#include <stdexcept>
#include <string>

using Object = QPDFObjectHandle;

namespace {

class StructureBuilder
{
public:
    StructureBuilder(const std::vector<ContentMark>& marks, QPDF& document, const Object& sheet)
        : m_marks(marks)
        , m_document(document)
        , m_sheet(sheet)
        , m_root(document.makeIndirectObject(Object::newDictionary({{"/Type", Object::newName("/StructTreeRoot")}})))
    {
    }

    Object treeOf(const AttestationPage& page)
    {
        Object body = addTo(m_root, "/Document");
        addLogo(body, page);
        qsizetype block = 0;
        for (const PageText& text : pageTexts(page)) {
            Object element = addTo(body, text.isTitle ? "/H1" : "/P");
            mark(element, ContentPlace{.block = block++});
        }
        for (const PageTable& table : pageTables(page, attestationPageSize))
            addTable(body, table, block++);
        if (m_leaves.size() != m_marks.size())
            throw std::logic_error("a part of the page has no place in its structure");

        m_root.replaceKey("/ParentTree",
                          m_document.makeIndirectObject(Object::newDictionary({
                              {"/Nums", Object::newArray({Object::newInteger(0),
                                                          m_document.makeIndirectObject(Object::newArray(m_leaves))})},
                          })));
        m_root.replaceKey("/ParentTreeNextKey", Object::newInteger(1));
        return m_root;
    }

private:
    void addLogo(Object& body, const AttestationPage& page)
    {
        if (m_marks.empty() || !std::holds_alternative<FigureMark>(m_marks.front()))
            return;
        Object figure = addTo(body, "/Figure");
        const QRectF rect = std::get<FigureMark>(m_marks.front()).rect;
        Object box = Object::newArray();
        for (const double edge : {rect.left(), rect.top(), rect.right(), rect.bottom()})
            box.appendItem(Object::parse(pdfNumber(edge)));
        figure.replaceKey("/Alt", Object::newUnicodeString(page.logo->image->title.toStdString()));
        figure.replaceKey(
            "/A", Object::newDictionary(
                      {{"/O", Object::newName("/Layout")}, {"/Placement", Object::newName("/Block")}, {"/BBox", box}}));
        mark(figure, m_marks.front());
    }

    void addTable(Object& body, const PageTable& content, qsizetype block)
    {
        Object table = addTo(body, "/Table");
        addHeaders(table, content.columns, block);
        for (qsizetype row = 0; row < content.rows.size(); ++row) {
            Object cells = addTo(table, "/TR");
            for (qsizetype column = 0; column < content.columns.size(); ++column) {
                Object cell = addTo(cells, "/TD");
                mark(cell, ContentPlace{.block = block, .row = row + 1, .column = column});
            }
        }
    }

    // A column without a title has its neighbour's.
    void addHeaders(Object& table, const QList<TableColumn>& columns, qsizetype block)
    {
        Object headers = addTo(table, "/TR");
        for (qsizetype column = 0; column < columns.size();) {
            const qsizetype first = column++;
            while (column < columns.size() && columns[column].value(TableColumnKey::title).toString().isEmpty())
                ++column;
            Object header = addTo(headers, "/TH");
            Object attributes =
                Object::newDictionary({{"/O", Object::newName("/Table")}, {"/Scope", Object::newName("/Column")}});
            if (column - first > 1)
                attributes.replaceKey("/ColSpan", Object::newInteger(column - first));
            header.replaceKey("/A", attributes);
            mark(header, ContentPlace{.block = block, .column = first});
        }
    }

    Object addTo(Object& parent, const char* type)
    {
        Object element = Object::newDictionary(
            {{"/Type", Object::newName("/StructElem")}, {"/S", Object::newName(type)}, {"/P", parent}});
        element = m_document.makeIndirectObject(element);
        if (!parent.hasKey("/K"))
            parent.replaceKey("/K", Object::newArray());
        parent.getKey("/K").appendItem(element);
        return element;
    }

    // The marks come in reading order: an element that shows nothing has none.
    void mark(Object& element, const ContentMark& wanted)
    {
        const std::size_t next = m_leaves.size();
        if (next == m_marks.size() || m_marks[next] != wanted)
            return;
        element.replaceKey("/Pg", m_sheet);
        element.replaceKey("/K", Object::newInteger(qint64(next)));
        m_leaves.push_back(element);
    }

    const std::vector<ContentMark>& m_marks;
    QPDF& m_document;
    Object m_sheet;
    Object m_root;
    std::vector<Object> m_leaves; // by their marks' numbers
};

} // namespace

QPDFObjectHandle structureTree(const AttestationPage& page, const std::vector<ContentMark>& marks, QPDF& document,
                               const QPDFObjectHandle& sheet)
{
    return StructureBuilder(marks, document, sheet).treeOf(page);
}
