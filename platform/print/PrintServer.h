#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QList>
#include <QSizeF>
#include <QString>

#include <chrono>
#include <expected>
#include <stop_token>

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
};

struct PrintJob
{
    QString queue;
    QString title; ///< what others see of the job: nothing personal
    QByteArray pdf;
    QList<PrintOption> options;
};

/// The CUPS server that the user prints to. Every operation waits for the server, but never long: on the interface
/// thread they have no place while there are windows. Any thread; one operation at a time.
class PrintServer
{
public:
    /// A server that stays silent that long, all silences together, is given up.
    static constexpr std::chrono::milliseconds patience{3000};

    /// An operation that the server leaves without an answer is given up when the token asks for it.
    explicit PrintServer(std::stop_token stop = {});

    /// The queues that there are. No server at all is an empty list; a silent one is a failure.
    [[nodiscard]] std::expected<QList<PrintQueue>, Error> queues() const;

    /// Hands a document over, from memory. The failure says in French why the server did not take it.
    [[nodiscard]] std::expected<void, Error> print(const PrintJob& job) const;

    /// The domain of the errors. Codes are IPP's status codes, and isSilent tells the one that is none.
    static const QString errorDomain;
    /// Whether the server was given up because it did not answer.
    [[nodiscard]] static bool isSilent(const Error& error);
    /// IPP's own name of the error's code, for the log.
    [[nodiscard]] static QString statusName(const Error& error);

private:
    std::stop_token m_stop;
};

/// Keeps CUPS out of what is done on this thread, as if no server were there, for as long as it lives. Qt's print
/// dialog waits for the server on the interface thread, for minutes if need be.
class WithoutPrintServer
{
public:
    WithoutPrintServer();
    ~WithoutPrintServer();
    WithoutPrintServer(const WithoutPrintServer&) = delete;
    WithoutPrintServer& operator=(const WithoutPrintServer&) = delete;
};
