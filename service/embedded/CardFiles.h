#pragma once

#include "service/embedded/CardChannel.h"

#include <optional>

/// Selects a card's applications and reads their transparent files.
class CardFiles
{
public:
    /// The channel must outlive it.
    explicit CardFiles(CardChannel& channel);

    /// Selects the application, unless it is selected. False when the card does not have it.
    [[nodiscard]] std::expected<bool, CardFault> selectApplication(const QByteArray& name);

    /// Forgets the selected application.
    void startOver() { m_application.clear(); }

    /// Reads a file of the selected application completely, in blocks of any size. CardRefusal when the card refuses,
    /// CardFileCut when the size is not the announced one.
    [[nodiscard]] std::expected<QByteArray, CardFault> readFile(quint16 identifier);

private:
    [[nodiscard]] std::expected<QByteArray, CardFault> readSelected(std::optional<qsizetype> size);

    CardChannel* m_channel;
    QByteArray m_application; // the selected one, or empty
};
