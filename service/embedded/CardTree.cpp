#include "service/embedded/CardTree.h"

#include <QXmlStreamWriter>

#include <algorithm>
#include <ranges>

namespace {

/// Removes the first name of a path.
QStringView takeName(QStringView& path)
{
    const qsizetype slash = path.indexOf(u'/');
    const QStringView name = path.first(slash < 0 ? path.size() : slash);
    path = slash < 0 ? QStringView() : path.sliced(slash + 1);
    return name;
}

} // namespace

CardTree& CardTree::at(QStringView path)
{
    CardTree* element = this;
    while (!path.isEmpty()) {
        const QStringView name = takeName(path);
        auto reversed = element->m_children | std::views::reverse;
        const auto found = std::ranges::find(reversed, name, &CardTree::m_name);
        element = found == reversed.end() ? &element->m_children.emplace_back(name) : &*found;
    }
    return *element;
}

CardTree& CardTree::append(QStringView path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    CardTree& parent = slash < 0 ? *this : at(path.first(slash));
    return parent.m_children.emplace_back(path.sliced(slash + 1));
}

std::vector<const CardTree*> CardTree::elements(QStringView path) const
{
    std::vector<const CardTree*> found{this};
    while (!path.isEmpty()) {
        const QStringView name = takeName(path);
        std::vector<const CardTree*> below;
        for (const CardTree* element : found) {
            for (const CardTree& child : element->m_children) {
                if (child.m_name == name)
                    below.push_back(&child);
            }
        }
        found = std::move(below);
    }
    return found;
}

QString CardTree::textAt(QStringView path) const
{
    const std::vector<const CardTree*> found = elements(path);
    return found.empty() ? QString() : found.front()->m_text;
}

QString CardTree::toXml() const
{
    QString text;
    QXmlStreamWriter writer(&text);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(2);
    writer.writeStartDocument();
    write(writer);
    writer.writeEndDocument();
    return text;
}

// A card's elements are four deep.
// NOLINTNEXTLINE(misc-no-recursion)
void CardTree::write(QXmlStreamWriter& writer) const
{
    writer.writeStartElement(m_name);
    if (!m_text.isEmpty())
        writer.writeCharacters(m_text);
    for (const CardTree& child : m_children)
        child.write(writer);
    writer.writeEndElement();
}
