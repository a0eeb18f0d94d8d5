#pragma once

#include "service/embedded/CardMap.h"

#include <QJsonObject>

/// One object of a map's data file, and where it stands there. The first thing that is wrong with any of them is kept
/// in one place, as a sentence; what is asked for afterwards is of no matter.
class MapReader
{
public:
    /// The fault is owned by the caller, and empty while there is none. Keys other than these are faults.
    MapReader(const QJsonValue& value, QString place, std::initializer_list<QLatin1StringView> keys, QString& fault);

    [[nodiscard]] bool has(QLatin1StringView key) const { return m_object.contains(key); }

    /// A text that is not blank.
    [[nodiscard]] QString text(QLatin1StringView key) const;
    /// The other value when there is none.
    [[nodiscard]] bool flag(QLatin1StringView key, bool otherwise) const;
    /// An application's name, 5 to 16 bytes.
    [[nodiscard]] QByteArray application(QLatin1StringView key) const;
    /// A file's identifier, two bytes.
    [[nodiscard]] quint16 fileNumber(QLatin1StringView key) const;
    /// Tags with slashes between them; all but the last are made of objects, and so is the last of a record.
    [[nodiscard]] TagPath tags(QLatin1StringView key) const;
    [[nodiscard]] TagPath recordTags(QLatin1StringView key) const;
    /// An array of such texts; empty when there is no such key.
    [[nodiscard]] std::vector<TagPath> tagPaths(QLatin1StringView key) const;
    [[nodiscard]] CardForm form(QLatin1StringView key) const;

    /// The elements of an array, each with its place; empty when there is no such key.
    struct Element
    {
        QJsonValue value;
        QString place;
    };
    [[nodiscard]] std::vector<Element> elements(QLatin1StringView key) const;
    [[nodiscard]] Element element(QLatin1StringView key) const;

    /// Keeps the sentence, with the place of the key in this object.
    void refuse(QLatin1StringView key, const QString& reason) const;

private:
    [[nodiscard]] TagPath tagsOf(const QString& text, QLatin1StringView key) const;
    [[nodiscard]] QByteArray bytes(QLatin1StringView key, qsizetype least, qsizetype most) const;
    [[nodiscard]] QString placeOf(QLatin1StringView key) const;

    QJsonObject m_object;
    QString m_place;
    QString* m_fault; // never null
};
