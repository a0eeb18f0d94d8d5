#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

/// What a second start has to tell the running instance: that it is wanted, and the card file to show, if any.
struct InstanceMessage
{
    /// Longest message in bytes; a card file's path has room in it whatever the file system.
    static constexpr qsizetype maximumSize = qsizetype{16} * 1024;

    /// Absolute path of the card file; absent for a mere start.
    std::optional<QString> cardPath;

    /// The message for a card as the command line names it; a relative path counts from the current folder.
    [[nodiscard]] static InstanceMessage forCard(const std::optional<QString>& card);

    /// The message as it travels; empty when it is over the maximum size.
    [[nodiscard]] QByteArray encoded() const;

    /// The message that the bytes hold; nullopt for anything malformed.
    [[nodiscard]] static std::optional<InstanceMessage> decoded(QByteArrayView bytes);
};
