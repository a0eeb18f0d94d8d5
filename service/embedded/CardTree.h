#pragma once

#include <QString>

#include <vector>

class QXmlStreamWriter;

/// An element of a card's document.
class CardTree
{
public:
    explicit CardTree(QStringView name)
        : m_name(name.toString())
    {
    }

    /// The last element at a path of names; missing elements are made. The reference is valid until a sibling of the
    /// element or of a parent is added.
    [[nodiscard]] CardTree& at(QStringView path);
    /// Adds an element at the path, after others of its name.
    [[nodiscard]] CardTree& append(QStringView path);

    /// The text of the first element at the path; null without one.
    [[nodiscard]] QString textAt(QStringView path) const;
    /// In document order.
    [[nodiscard]] std::vector<const CardTree*> elements(QStringView path) const;
    void setText(const QString& text) { m_text = text; }

    /// The XML document with this root.
    [[nodiscard]] QString toXml() const;

private:
    void write(QXmlStreamWriter& writer) const;

    QString m_name;
    QString m_text;
    std::vector<CardTree> m_children;
};
