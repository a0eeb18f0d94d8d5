#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

/// The text under the card's summary: the state of the shown card, then the last message. Times are local.
class PanelLine
{
public:
    enum class CardOrigin
    {
        Reader,
        File,
    };

    /// The shown card was read, or its file was opened. Ends the state of a failed read.
    void setCard(CardOrigin origin, const QDateTime& time);
    /// A read failed: the shown card, if any, is an earlier one.
    void setReadFailed(const QDateTime& time);
    /// The same for a cancelled read.
    void setReadCancelled(const QDateTime& time);
    [[nodiscard]] bool isReadFailed() const { return m_failedAt.has_value(); }
    /// Whether the shown card is not from the last read.
    [[nodiscard]] bool isCardEarlier() const { return m_card.has_value() && isReadFailed(); }
    /// Connecting to the card service takes longer than usual.
    void setConnecting(bool isConnecting) { m_isConnecting = isConnecting; }
    /// The last save failed for that reason; empty after a success.
    void setSaveFailure(const QString& text) { m_saveFailure = text; }
    /// Why the last request was refused; empty when it was not.
    void setNotice(const QString& text) { m_notice = text; }

    /// The notice, or else the failed save, or nothing.
    [[nodiscard]] const QString& told() const { return m_notice.isEmpty() ? m_saveFailure : m_notice; }
    /// The card's line and, if there is one, that message.
    [[nodiscard]] QString text() const;

private:
    struct Card
    {
        CardOrigin origin;
        QDateTime time;
    };

    [[nodiscard]] QString cardText() const;
    [[nodiscard]] QString failedReadText() const;

    std::optional<Card> m_card;
    std::optional<QDateTime> m_failedAt;
    bool m_isCancelled = false; // the read was cancelled
    bool m_isConnecting = false;
    QString m_saveFailure;
    QString m_notice;
};
