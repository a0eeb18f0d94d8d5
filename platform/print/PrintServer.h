#pragma once

#include "platform/print/PrintMessages.h"

#include <QObject>
#include <QProcess>
#include <QTimer>

#include <chrono>
#include <functional>
#include <utility>

/// The print server that the user prints to, asked by a program of its own for each operation: the print helper. A
/// server that stalls keeps that program waiting alone, which can be ended. One operation at a time. Main thread only.
class PrintServer final : public QObject
{
    Q_OBJECT

public:
    /// A server that has not answered by then is given up.
    static constexpr std::chrono::milliseconds patience{3000};

    /// The program is the print helper, pelmora-print.
    explicit PrintServer(QString program);
    /// A job that is on its way arrives first, unless the server has stopped answering.
    ~PrintServer() override;
    Q_DISABLE_COPY_MOVE(PrintServer)

    using Told = std::function<void(const PrintAnswer&)>;
    /// Asks which queues there are. No server at all is an empty list; a silent one is a failure.
    void listQueues(Told whenKnown) { ask(std::nullopt, std::move(whenKnown)); }
    /// Hands a document over, from memory. The failure says in French why the server did not take it.
    void print(const PrintJob& job, Told whenTaken) { ask(job, std::move(whenTaken)); }
    /// Ends the operation, if there is one. Nothing is told any more.
    void cancel();

    /// Either one for programs without windows, which may wait.
    [[nodiscard]] PrintAnswer askAndWait(const PrintRequest& request);

private:
    void ask(const PrintRequest& request, Told tell);
    void wait();
    void takeAnswer();
    void tell(const PrintAnswer& answer);

    QString m_program;
    QProcess m_helper;
    QTimer m_patience; // runs from the question to its answer
    bool m_isPrinting = false;
    Told m_tell; // empty when no question is open
};
