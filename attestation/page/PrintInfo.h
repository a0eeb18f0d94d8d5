#pragma once

#include "attestation/page/PageOnSheet.h"
#include "platform/print/PrintMessages.h"

#include <QByteArray>
#include <QList>
#include <QString>

/// What others see of an attestation's print job, and the name that a file of it is offered under: never whose it is.
inline constexpr QStringView attestationJobName = u"Attestation de droits";

/// How one attestation is printed.
struct PrintInfo
{
    QString queue;
    PaperSheet sheet;
    QByteArray media = "A4";     ///< the sheet's paper, as the print server knows it
    QList<PrintOption> settings; ///< of the queue, and over them what was asked for this time

    /// As the queue's administrator and the user have set it up.
    [[nodiscard]] static PrintInfo defaultsOf(const PrintQueue& queue);

    /// Asks for a setting this time, in the place of the queue's own.
    void set(const QByteArray& name, const QByteArray& value);

    /// The job of a document that was made for the sheet, which the printer must not turn, scale or move.
    [[nodiscard]] PrintJob job(const QByteArray& pdf) const;
};
