#pragma once

#include "service/embedded/CardChannel.h"

#include <optional>

/// A card's applications, and the transparent files in them.
class CardFiles
{
public:
    /// The channel outlives this.
    explicit CardFiles(CardChannel& channel);

    /// Selects the application of that name, unless it is selected already. False when the card has none such.
    [[nodiscard]] std::expected<bool, CardFault> selectApplication(const QByteArray& name);

    /// Takes nothing as selected, as is the case with a card that has just been put in.
    void startOver() { m_application.clear(); }

    /// The bytes of a file of the selected application, from its first one to its end, however few the card or the
    /// reader gives at a time. A refusal is a CardRefusal; a CardFileCut is a file of another size than the card says.
    [[nodiscard]] std::expected<QByteArray, CardFault> readFile(quint16 identifier);

private:
    [[nodiscard]] std::expected<QByteArray, CardFault> readSelected(std::optional<qsizetype> size);

    CardChannel* m_channel;
    QByteArray m_application; // the selected one; empty: none
};
