#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QList>
#include <QSizeF>
#include <QString>

#include <expected>
#include <optional>

/// A setting of a print job, under the name and with the value that CUPS knows.
struct PrintOption
{
    QByteArray name;
    QByteArray value;

    friend bool operator==(const PrintOption&, const PrintOption&) = default;
};

/// A queue as its administrator and the user have set it up.
struct PrintQueue
{
    QString name; ///< with the instance after a slash, where the user has made one
    bool isDefault = false;
    QByteArray media;            ///< the paper's name, as CUPS wrote it; empty when the queue tells none
    QSizeF paper;                ///< the paper's size in points, upright; empty when it is not known
    bool landscape = false;      ///< whether sheets are to be read with their long side across
    QList<PrintOption> defaults; ///< the other settings that jobs get unless they say otherwise

    friend bool operator==(const PrintQueue&, const PrintQueue&) = default;
};

struct PrintJob
{
    QString queue;
    QString title; ///< what others see of the job: nothing personal
    QByteArray pdf;
    QList<PrintOption> options;

    friend bool operator==(const PrintJob&, const PrintJob&) = default;
};

/// The domain of the errors that printing gives.
inline constexpr QStringView printErrorDomain = u"Impression";

// What the print helper is asked and answers, one CBOR item each. The bytes of anything else decode to nothing.

/// A job to be printed; without one, the queues are asked for.
using PrintRequest = std::optional<PrintJob>;
[[nodiscard]] QByteArray encodePrintRequest(const PrintRequest& request);
[[nodiscard]] std::optional<PrintRequest> decodePrintRequest(const QByteArray& bytes);

/// The queues, none when a job was taken; or why not.
using PrintAnswer = std::expected<QList<PrintQueue>, Error>;
[[nodiscard]] QByteArray encodePrintAnswer(const PrintAnswer& answer);
[[nodiscard]] std::optional<PrintAnswer> decodePrintAnswer(const QByteArray& bytes);
