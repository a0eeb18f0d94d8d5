#pragma once

#include <QStringList>

/// A fault and its place: a call, or an entry of a data file.
struct CheckFault
{
    QString place; // empty for the whole
    QString reason;
};

/// The result of a check, with texts in French.
struct CheckReport
{
    struct Fact
    {
        QString label;
        QString value;
    };

    QString subject; // what was checked: "une bibliothèque de lecture"
    QList<Fact> facts;
    QStringList remarks; // allowed, but worth knowing
    QList<CheckFault> faults;

    [[nodiscard]] bool isSound() const { return faults.isEmpty(); }
};

/// The report as French text with aligned columns.
[[nodiscard]] QString checkText(const CheckReport& report);
