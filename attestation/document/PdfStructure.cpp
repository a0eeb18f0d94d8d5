#include "attestation/document/PdfStructure.h"

#include "attestation/document/PdfNumber.h"
#include "attestation/page/AttestationContent.h"
#include "attestation/page/SchemeLogos.h"

#include <fmt/format.h>

#include <string>
#include <string_view>

namespace {

struct Element
{
    PdfReference place;
    PdfReference parent;
    std::string_view type;
    std::string entries; // beside those that every element has
    std::string children;
};

class StructureBuilder
{
public:
    StructureBuilder(PdfFile& file, const std::vector<ContentMark>& marks, PdfReference sheet)
        : m_file(file)
        , m_marks(marks)
        , m_sheet(sheet)
    {
    }

    std::optional<PdfReference> treeOf(const AttestationPage& page)
    {
        const PdfReference root = m_file.reserve();
        const std::size_t body = add("/Document", root);
        addLogo(body, page);
        qsizetype block = 0;
        for (const PageText& text : pageTexts(page))
            mark(addTo(body, text.isTitle ? "/H1" : "/P"), ContentPlace{.block = block++});
        for (const PageTable& table : pageTables(page, attestationPageSize))
            addTable(body, table, block++);
        if (m_marked != m_marks.size())
            return std::nullopt;

        writeElements();
        const PdfReference leaves = m_file.add(fmt::format("[{}]", m_leaves));
        const PdfReference parents = m_file.add(fmt::format("<< /Nums [0 {}] >>", leaves.text()));
        m_file.set(root, fmt::format("<< /Type /StructTreeRoot /K [{}] /ParentTree {} /ParentTreeNextKey 1 >>",
                                     m_elements[body].place.text(), parents.text()));
        return root;
    }

private:
    void addLogo(std::size_t body, const AttestationPage& page)
    {
        if (m_marks.empty() || !std::holds_alternative<FigureMark>(m_marks.front()))
            return;
        const QRectF rect = std::get<FigureMark>(m_marks.front()).rect;
        std::string box;
        for (const double edge : {rect.left(), rect.top(), rect.right(), rect.bottom()})
            box += pdfNumber(edge) + ' ';
        mark(addTo(body, "/Figure",
                   fmt::format("/Alt {} /A << /O /Layout /Placement /Block /BBox [{}] >> ",
                               pdfString(page.logo->image->title), box)),
             m_marks.front());
    }

    void addTable(std::size_t body, const PageTable& content, qsizetype block)
    {
        const std::size_t table = addTo(body, "/Table");
        addHeaders(table, content.columns, block);
        for (qsizetype row = 0; row < content.rows.size(); ++row) {
            const std::size_t cells = addTo(table, "/TR");
            for (qsizetype column = 0; column < content.columns.size(); ++column)
                mark(addTo(cells, "/TD"), ContentPlace{.block = block, .row = row + 1, .column = column});
        }
    }

    // A column without a title has its neighbour's.
    void addHeaders(std::size_t table, const QList<TableColumn>& columns, qsizetype block)
    {
        const std::size_t headers = addTo(table, "/TR");
        for (qsizetype column = 0; column < columns.size();) {
            const qsizetype first = column++;
            while (column < columns.size() && columns[column].value(TableColumnKey::title).toString().isEmpty())
                ++column;
            const std::string span = column - first > 1 ? fmt::format(" /ColSpan {}", column - first) : std::string();
            mark(addTo(headers, "/TH", fmt::format("/A << /O /Table /Scope /Column{} >> ", span)),
                 ContentPlace{.block = block, .column = first});
        }
    }

    std::size_t add(std::string_view type, PdfReference parent, std::string entries = {})
    {
        m_elements.push_back({m_file.reserve(), parent, type, std::move(entries), {}});
        return m_elements.size() - 1;
    }

    std::size_t addTo(std::size_t parent, std::string_view type, std::string entries = {})
    {
        const std::size_t element = add(type, m_elements[parent].place, std::move(entries));
        m_elements[parent].children += m_elements[element].place.text() + ' ';
        return element;
    }

    // The marks come in reading order: an element that shows nothing has none.
    void mark(std::size_t element, const ContentMark& wanted)
    {
        if (m_marked == m_marks.size() || m_marks[m_marked] != wanted)
            return;
        m_elements[element].entries += fmt::format("/Pg {} /K {} ", m_sheet.text(), m_marked);
        m_leaves += m_elements[element].place.text() + ' ';
        ++m_marked;
    }

    void writeElements()
    {
        for (const Element& element : m_elements) {
            const std::string children =
                element.children.empty() ? std::string() : fmt::format("/K [{}] ", element.children);
            m_file.set(element.place, fmt::format("<< /Type /StructElem /S {} /P {} {}{}>>", element.type,
                                                  element.parent.text(), element.entries, children));
        }
    }

    PdfFile& m_file;
    const std::vector<ContentMark>& m_marks;
    PdfReference m_sheet;
    std::vector<Element> m_elements;
    std::string m_leaves; // the elements with marks, by the marks' numbers
    std::size_t m_marked = 0;
};

} // namespace

std::optional<PdfReference> addStructureTree(PdfFile& file, const AttestationPage& page,
                                             const std::vector<ContentMark>& marks, PdfReference sheet)
{
    return StructureBuilder(file, marks, sheet).treeOf(page);
}
