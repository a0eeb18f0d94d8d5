#pragma once

#include "service/embedded/CardMap.h"

#include <QJsonObject>

/// Reads an object of a map's data file. Each fault in any object of the file is kept as a sentence; values that are
/// read after a fault do not matter, and later faults may follow from it.
class MapReader
{
public:
    /// The caller owns the list of faults. Other keys than these are faults.
    MapReader(const QJsonValue& value, QString place, std::initializer_list<QLatin1StringView> keys,
              QStringList& faults);

    [[nodiscard]] bool has(QLatin1StringView key) const { return m_object.contains(key); }

    /// A text, which must not be blank.
    [[nodiscard]] QString text(QLatin1StringView key) const;
    [[nodiscard]] bool flag(QLatin1StringView key, bool otherwise) const;
    /// The name of an application: 5 to 16 bytes.
    [[nodiscard]] QByteArray application(QLatin1StringView key) const;
    /// A file identifier: two bytes.
    [[nodiscard]] quint16 fileNumber(QLatin1StringView key) const;
    /// Tags joined by slashes. All but the last must be constructed; for a record also the last.
    [[nodiscard]] TagPath tags(QLatin1StringView key) const;
    [[nodiscard]] TagPath recordTags(QLatin1StringView key) const;
    /// An array of such texts; empty without the key.
    [[nodiscard]] std::vector<TagPath> tagPaths(QLatin1StringView key) const;
    [[nodiscard]] CardForm form(QLatin1StringView key) const;

    /// An array's elements with their places; empty without the key.
    struct Element
    {
        QJsonValue value;
        QString place;
    };
    [[nodiscard]] std::vector<Element> elements(QLatin1StringView key) const;
    [[nodiscard]] Element element(QLatin1StringView key) const;

    /// Adds a fault, with the place of the key.
    void refuse(QLatin1StringView key, const QString& reason) const;

private:
    [[nodiscard]] TagPath tagsOf(const QString& text, QLatin1StringView key) const;
    [[nodiscard]] QByteArray bytes(QLatin1StringView key, qsizetype least, qsizetype most) const;
    [[nodiscard]] QString placeOf(QLatin1StringView key) const;

    QJsonObject m_object;
    QString m_place;
    QStringList* m_faults; // null when the value is no object, which is one fault
};
