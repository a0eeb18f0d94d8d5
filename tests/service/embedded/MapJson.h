#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

/// A valid map of one application and two files, small enough to change one place.
inline QJsonObject smallMap()
{
    return QJsonDocument::fromJson(R"({
        "format": 1,
        "name": "Carte d’essai",
        "version": "7",
        "remarks": ["inventée"],
        "application": "F0 00000000",
        "identity": ["série"],
        "files": [
            {"name": "série", "application": "F000000000", "file": "0001"},
            {"name": "personnes", "application": "F000000000", "file": "0002"}
        ],
        "values": [{"file": "série", "path": "tech/numSerie", "tag": "5A", "form": "hexadecimal"}],
        "beneficiaries": [
            {
                "file": "personnes",
                "record": "65",
                "fields": [
                    {"path": "ident/nomUsuel", "tag": "80", "form": "text"},
                    {"path": "ident/prenomUsuel", "tag": "81", "form": "text"},
                    {"path": "ident/naissance/date", "tag": "82", "form": "date"},
                    {"path": "ident/rangDeNaissance", "tag": "83", "form": "digits"},
                    {"path": "ident/nir", "tag": "93", "form": "number"},
                    {"path": "amo/qualBenef", "tag": "A1/80", "form": "digits"},
                    {"path": "amo/codeRegime", "tag": "A1/81", "form": "digits"},
                    {"path": "amo/caisse", "tag": "A1/82", "form": "digits"},
                    {"path": "amo/centreCarte", "tag": "A1/83", "form": "digits"},
                    {"path": "amo/codeGestion", "tag": "A1/84", "form": "text"}
                ],
                "lists": [
                    {
                        "path": "ident/listePeriodesDroits/T_AsnPeriode",
                        "record": "A2",
                        "fields": [{"path": "debut", "tag": "80", "form": "date"}]
                    }
                ]
            }
        ]
    })")
        .object();
}

/// The value with another one at a path of keys and indices; an undefined one removes the key or the element.
inline QJsonValue withValue(const QJsonValue& value, const QStringList& path, const QJsonValue& other)
{
    if (path.isEmpty())
        return other;
    if (value.isArray()) {
        QJsonArray array = value.toArray();
        const int index = path.first().toInt();
        const QJsonValue element =
            index < array.size() ? withValue(array.at(index), path.sliced(1), other) : QJsonValue(other);
        if (index == array.size())
            array.append(element);
        else if (element.isUndefined())
            array.removeAt(index);
        else
            array.replace(index, element);
        return array;
    }
    QJsonObject object = value.toObject();
    const QJsonValue member = withValue(object.value(path.first()), path.sliced(1), other);
    if (member.isUndefined())
        object.remove(path.first());
    else
        object.insert(path.first(), member);
    return object;
}

/// The data file of the small map with another value at a path of keys and indices with slashes between them.
inline QByteArray mapWith(const QString& path, const QJsonValue& other)
{
    return QJsonDocument(withValue(smallMap(), path.split(u'/'), other).toObject()).toJson();
}
