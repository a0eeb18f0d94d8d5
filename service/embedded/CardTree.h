#pragma once

#include <QString>
#include <QStringView>

#include <vector>

class QXmlStreamWriter;

/// An element of the card's document while it is made.
class CardTree
{
public:
    explicit CardTree(QStringView name)
        : m_name(name.toString())
    {
    }

    /// The element at a path of names below this one, made as far as it lacks; of several, the last one. The reference
    /// lasts until an element is added beside it, or beside one that holds it.
    [[nodiscard]] CardTree& at(QStringView path);
    /// A new element at the path, after all others of its name.
    [[nodiscard]] CardTree& append(QStringView path);

    /// The text of the element at the path; null when there is none.
    [[nodiscard]] QString textAt(QStringView path) const;
    /// The elements at the path, in their order.
    [[nodiscard]] std::vector<const CardTree*> elements(QStringView path) const;
    void setText(const QString& text) { m_text = text; }

    /// The document whose root this is.
    [[nodiscard]] QString toXml() const;

private:
    void write(QXmlStreamWriter& writer) const;

    QString m_name;
    QString m_text;
    std::vector<CardTree> m_children;
};
