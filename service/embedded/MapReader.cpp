#include "service/embedded/MapReader.h"

#include "service/embedded/Tlv.h"

#include <QJsonArray>
#include <QtEndian>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

/// The bytes of hexadecimal digits, without blanks; absent for other texts.
std::optional<QByteArray> fromDigits(QString text)
{
    text.remove(u' ');
    const auto isDigit = [](QChar c) { return c.unicode() < 0x80 && std::isxdigit(c.unicode()) != 0; };
    if (text.size() % 2 != 0 || !std::ranges::all_of(text, isDigit))
        return std::nullopt;
    return QByteArray::fromHex(text.toLatin1());
}

} // namespace

MapReader::MapReader(const QJsonValue& value, QString place, std::initializer_list<QLatin1StringView> keys,
                     QStringList& faults)
    : m_object(value.toObject())
    , m_place(std::move(place))
    , m_faults(&faults)
{
    if (!value.isObject()) {
        refuse({}, u"un objet est attendu"_s);
        m_faults = nullptr;
        return;
    }
    for (const QString& key : m_object.keys()) {
        if (std::ranges::find(keys, key) == keys.end())
            refuse({}, u"clé inconnue « %1 »"_s.arg(key));
    }
}

QString MapReader::text(QLatin1StringView key) const
{
    const QString text = m_object.value(key).toString().trimmed();
    if (text.isEmpty())
        refuse(key, u"un texte est attendu"_s);
    return text;
}

bool MapReader::flag(QLatin1StringView key, bool otherwise) const
{
    const QJsonValue value = m_object.value(key);
    if (!value.isUndefined() && !value.isBool())
        refuse(key, u"true ou false est attendu"_s);
    return value.toBool(otherwise);
}

QByteArray MapReader::application(QLatin1StringView key) const
{
    constexpr qsizetype shortest = 5;
    constexpr qsizetype longest = 16;
    return bytes(key, shortest, longest);
}

quint16 MapReader::fileNumber(QLatin1StringView key) const
{
    const QByteArray number = bytes(key, 2, 2);
    return number.isEmpty() ? quint16{0} : qFromBigEndian<quint16>(number.constData());
}

TagPath MapReader::tags(QLatin1StringView key) const
{
    const QString tags = text(key);
    return tags.isEmpty() ? TagPath() : tagsOf(tags, key);
}

std::vector<TagPath> MapReader::tagPaths(QLatin1StringView key) const
{
    std::vector<TagPath> paths;
    for (const Element& element : elements(key))
        paths.push_back(tagsOf(element.value.toString(), key));
    return paths;
}

TagPath MapReader::tagsOf(const QString& text, QLatin1StringView key) const
{
    TagPath tags;
    for (const QString& part : text.split(u'/')) {
        const std::optional<QByteArray> tagBytes = fromDigits(part);
        const std::optional<quint32> tag = tagBytes ? tlvTag(*tagBytes) : std::nullopt;
        if (!tag) {
            refuse(key, u"« %1 » n’est pas une étiquette"_s.arg(part));
            return {};
        }
        if (!tags.empty() && !isConstructedTag(tags.back())) {
            refuse(key, u"l’étiquette qui précède « %1 » ne contient pas d’objets"_s.arg(part));
            return {};
        }
        tags.push_back(*tag);
    }
    if (tags.size() >= static_cast<std::size_t>(deepestTlv))
        refuse(key, u"trop d’étiquettes"_s);
    return tags;
}

TagPath MapReader::recordTags(QLatin1StringView key) const
{
    TagPath path = tags(key);
    if (!path.empty() && !isConstructedTag(path.back()))
        refuse(key, u"la dernière étiquette ne contient pas d’objets"_s);
    return path;
}

CardForm MapReader::form(QLatin1StringView key) const
{
    struct Name
    {
        QLatin1StringView name;
        CardForm form = {};
    };
    static constexpr std::array names{
        Name{"text"_L1, CardForm::Text},
        Name{"utf8"_L1, CardForm::Utf8},
        Name{"digits"_L1, CardForm::Digits},
        Name{"packed-digits"_L1, CardForm::PackedDigits},
        Name{"number"_L1, CardForm::Number},
        Name{"date"_L1, CardForm::Date},
        Name{"short-date"_L1, CardForm::ShortDate},
        Name{"hexadecimal"_L1, CardForm::Hexadecimal},
    };
    const QString wanted = text(key);
    const auto* found = std::ranges::find_if(names, [&wanted](const Name& known) { return known.name == wanted; });
    if (found != names.end())
        return found->form;
    if (!wanted.isEmpty())
        refuse(key, u"forme inconnue « %1 »"_s.arg(wanted));
    return {};
}

std::vector<MapReader::Element> MapReader::elements(QLatin1StringView key) const
{
    const QJsonValue value = m_object.value(key);
    const QJsonArray array = value.toArray();
    if (!value.isUndefined() && (!value.isArray() || array.isEmpty()))
        refuse(key, u"un tableau qui n’est pas vide est attendu"_s);
    std::vector<Element> elements;
    for (const auto& entry : array)
        elements.push_back({entry, u"%1[%2]"_s.arg(placeOf(key)).arg(elements.size())});
    return elements;
}

MapReader::Element MapReader::element(QLatin1StringView key) const
{
    return {m_object.value(key), placeOf(key)};
}

void MapReader::refuse(QLatin1StringView key, const QString& reason) const
{
    if (m_faults == nullptr)
        return;
    const QString place = placeOf(key);
    m_faults->append(place.isEmpty() ? reason : u"%1 : %2"_s.arg(place, reason));
}

QByteArray MapReader::bytes(QLatin1StringView key, qsizetype least, qsizetype most) const
{
    std::optional<QByteArray> bytes = fromDigits(m_object.value(key).toString());
    if (bytes && bytes->size() >= least && bytes->size() <= most)
        return *std::move(bytes);
    const QString count = least == most ? QString::number(least) : u"%1 à %2"_s.arg(least).arg(most);
    refuse(key, u"%1 octets en hexadécimal sont attendus"_s.arg(count));
    return {};
}

QString MapReader::placeOf(QLatin1StringView key) const
{
    return m_place.isEmpty() || key.isEmpty() ? m_place + key : m_place + u'.' + key;
}
