#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// A reader, as people and as the system name it.
struct ReaderName
{
    QString shown;
    QByteArray system; // by which PC/SC knows it, in its own bytes
    QString model;     // without the number that tells two of a model apart

    friend bool operator==(const ReaderName&, const ReaderName&) = default;
};

/// Names readers by their models, in the given order: without the interface, the serial number and the numbers of the
/// reader and of its slot, with which pcsc-lite completes a name. Further readers of one model are told apart by a
/// number: "Feitian SCR301", "Feitian SCR301 (2)". The accepted model has one spelling, whatever the system's: drivers
/// differ in case, in blanks and in how they write the maker.
[[nodiscard]] QList<ReaderName> readerNames(const QList<QByteArray>& systemNames);
