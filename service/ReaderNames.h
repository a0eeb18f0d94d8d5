#pragma once

#include <QList>
#include <QString>

struct ReaderName
{
    QString shown;
    QByteArray system; // PC/SC's name, unchanged
    QString model;     // the name without the number that distinguishes readers of one model

    friend bool operator==(const ReaderName&, const ReaderName&) = default;
};

/// Names readers by their models, in the given order. The interface, the serial number and the reader and slot numbers
/// that pcsc-lite adds are removed. Readers of the same model are numbered: "Feitian SCR301", "Feitian SCR301 (2)". The
/// accepted model always has the same spelling: drivers differ in case, blanks and the maker's name.
[[nodiscard]] QList<ReaderName> readerNames(const QList<QByteArray>& systemNames);
