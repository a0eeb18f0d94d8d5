#pragma once

#include "app/models/DesktopAction.h"

#include <QString>

#include <optional>

/// The message of a second start to the running instance: show yourself, perhaps with a card file, or do
/// something.
struct InstanceMessage
{
    /// Maximum size in bytes, large enough for any path.
    static constexpr qsizetype maximumSize = qsizetype{16} * 1024;

    /// Absolute path of the card file; absent without one.
    std::optional<QString> cardPath;
    /// Without a card file only.
    std::optional<DesktopAction> action = std::nullopt;
    /// For bringing the window to the front (ActivationToken).
    std::optional<QString> activationToken = std::nullopt;

    /// The message for a card file; a relative path is relative to the current folder.
    [[nodiscard]] static InstanceMessage forCard(const std::optional<QString>& card);

    /// The message as bytes; empty when it is over the maximum size.
    [[nodiscard]] QByteArray encoded() const;

    /// The message in the bytes; nullopt if they are malformed.
    [[nodiscard]] static std::optional<InstanceMessage> decoded(QByteArrayView bytes);
};
