#pragma once

#include "service/FundTable.h"
#include "service/ReadingLibrary.h"

#include <QCborMap>

#include <memory>
#include <optional>

/// Answers the application's five commands. Requests are dictionaries of texts, answers have a "Status".
class ServiceCommands
{
public:
    ServiceCommands(std::unique_ptr<ReadingLibrary> library, FundTable funds);

    /// Absent for an unknown command.
    [[nodiscard]] std::optional<QCborMap> answer(const QCborMap& request);

    /// Reports the reader's state and its changes with the library that the last request has initialised, if it has.
    void watchReader(const ReaderReport& report);

    /// Whether the reading library has abandoned a call: there are no more answers.
    [[nodiscard]] bool isBeyondUse() const { return m_library->isBeyondUse(); }

private:
    QCborMap initialise(const QCborMap& request);
    QCborMap listReaders(const QCborMap& request);
    QCborMap chooseReaders(const QCborMap& request);
    QCborMap describeLibrary(const QCborMap& request);
    QCborMap readCard(const QCborMap& request);

    /// Chooses the accepted reader for the health card, and another one, if there is one, for the professional's card.
    /// False when it is not connected.
    [[nodiscard]] bool chooseAcceptedReader();
    /// The reply to a failed read with the library's hint or else the given text.
    [[nodiscard]] QCborMap readFailure(ReadResult result, const QString& otherwise = {}) const;

    std::unique_ptr<ReadingLibrary> m_library;
    std::unique_ptr<ReaderWatch> m_watch; // null when there is nothing to follow
    FundTable m_funds;
    bool m_initialised = false;
    bool m_isWatchDue = false;
    bool m_readersChosen = false;
};
