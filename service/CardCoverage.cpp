#include "service/CardCoverage.h"

#include "card/CardKeys.h"

#include <QXmlStreamReader>

namespace {

constexpr ElementPath beneficiaryElement = CardPath::document / CardPath::beneficiary;
constexpr QStringView beneficiaryPath = beneficiaryElement.utf16();
constexpr QStringView qualityPath = pathOf(CardKey::quality);
constexpr QStringView schemePath = pathOf(CardKey::regimeCode);
constexpr QStringView fundPath = pathOf(CardKey::fundCode);

/// Collects the first quality, scheme and fund of each beneficiary.
class CoverageFinder
{
public:
    /// False when the elements are nested too deep.
    [[nodiscard]] bool startElement(const QXmlStreamReader& reader)
    {
        if (m_starts.size() >= deepestNesting)
            return false;
        m_starts.push_back(m_path.size());
        if (!m_path.isEmpty())
            m_path += u'/';
        // A name with a namespace gets a brace, so that it matches no path.
        if (!reader.namespaceUri().isEmpty())
            m_path += u'{';
        m_path += reader.name();
        if (m_path == beneficiaryPath) {
            m_values = {};
        } else if (Value* value = valueAtPath(); value != nullptr && !value->found) {
            value->found = true;
            m_current = value;
            m_currentDepth = m_starts.size();
        }
        return true;
    }

    void characters(QStringView text)
    {
        if (m_current != nullptr)
            m_current->text += text;
    }

    void endElement()
    {
        if (m_path == beneficiaryPath)
            keepBeneficiary();
        if (m_starts.size() == m_currentDepth)
            m_current = nullptr;
        m_path.truncate(m_starts.takeLast());
    }

    [[nodiscard]] CardCoverage coverage() const { return m_coverage; }

private:
    struct Value
    {
        QStringView path;
        QString text;
        bool found = false;
    };
    struct Values
    {
        Value quality{qualityPath, {}, false};
        Value scheme{schemePath, {}, false};
        Value fund{fundPath, {}, false};
    };

    static constexpr qsizetype deepestNesting = 256;

    Value* valueAtPath()
    {
        const QStringView path(m_path);
        constexpr qsizetype prefix = beneficiaryPath.size() + 1;
        if (path.size() <= prefix || !path.startsWith(beneficiaryPath) || path[prefix - 1] != u'/')
            return nullptr;
        for (Value* value : {&m_values.quality, &m_values.scheme, &m_values.fund}) {
            if (path.sliced(prefix) == value->path)
                return value;
        }
        return nullptr;
    }

    void keepBeneficiary()
    {
        const bool isMain = m_values.quality.found && m_values.quality.text == insuredQuality;
        if (m_hasMain || (m_hasFirst && !isMain))
            return;
        m_coverage = {m_values.scheme.text, m_values.fund.text};
        m_hasFirst = true;
        m_hasMain = isMain;
    }

    QString m_path;
    QList<qsizetype> m_starts; // for each open element, the length of its parent's path
    Values m_values;
    Value* m_current = nullptr;
    qsizetype m_currentDepth = 0;
    CardCoverage m_coverage;
    bool m_hasFirst = false;
    bool m_hasMain = false;
};

/// Whether a document type has an internal subset: a bracket outside of quotes.
bool hasDeclarations(QStringView documentType)
{
    QChar quote;
    for (const QChar character : documentType) {
        if (!quote.isNull())
            quote = character == quote ? QChar() : quote;
        else if (character == u'"' || character == u'\'')
            quote = character;
        else if (character == u'[')
            return true;
    }
    return false;
}

} // namespace

std::optional<CardCoverage> cardCoverage(QStringView text)
{
    QXmlStreamReader reader{text.toString()};
    CoverageFinder finder;
    bool hasDocumentType = false;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::DTD:
            // QXmlStreamReader accepts a second document type.
            if (hasDocumentType || hasDeclarations(reader.text()))
                return std::nullopt;
            hasDocumentType = true;
            break;
        // An entity that only an external file, which is never read, could declare.
        case QXmlStreamReader::EntityReference:
            return std::nullopt;
        case QXmlStreamReader::StartElement:
            if (!finder.startElement(reader))
                return std::nullopt;
            break;
        case QXmlStreamReader::Characters:
            finder.characters(reader.text());
            break;
        case QXmlStreamReader::EndElement:
            finder.endElement();
            break;
        default:
            break;
        }
    }
    if (reader.hasError())
        return std::nullopt;
    return finder.coverage();
}
