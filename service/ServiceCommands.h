#pragma once

#include "service/FundTable.h"
#include "service/ReadingLibrary.h"

#include <QCborMap>

#include <memory>
#include <optional>

/// Answers the five commands of the application: each request is a dictionary of texts, each answer a dictionary with a
/// "Status".
class ServiceCommands
{
public:
    ServiceCommands(std::unique_ptr<ReadingLibrary> library, FundTable funds);

    /// Nothing when the request is no command of ours.
    [[nodiscard]] std::optional<QCborMap> answer(const QCborMap& request);

    /// Whether the reading library has left a call behind: there will be no more answers.
    [[nodiscard]] bool isBeyondUse() const { return m_library->isBeyondUse(); }

private:
    QCborMap initialise(const QCborMap& request);
    QCborMap listReaders(const QCborMap& request);
    QCborMap chooseReaders(const QCborMap& request);
    QCborMap describeLibrary(const QCborMap& request);
    QCborMap readCard(const QCborMap& request);

    /// Chooses the accepted reader, and another one, if there is one, for the professional's card. Whether it is there.
    [[nodiscard]] bool chooseAcceptedReader();
    /// The failure of a read, with what the library has to say of it, or else that.
    [[nodiscard]] QCborMap readFailure(ReadResult result, const QString& otherwise = {}) const;

    std::unique_ptr<ReadingLibrary> m_library;
    FundTable m_funds;
    bool m_initialised = false;
    bool m_readersChosen = false;
};
