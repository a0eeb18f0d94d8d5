#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

/// What the main window says under the card's summary: first what is true of the card that is shown, then what the user
/// was last told. The first is never hidden by the second. A value without a window; times are the desktop's own.
class PanelLine
{
public:
    enum class CardOrigin
    {
        Reader,
        File,
    };

    /// The card that is shown was read, or its file was opened, at that time. A read that failed before counts no more.
    void setCard(CardOrigin origin, const QDateTime& time);
    /// A read failed at that time: the card that is shown, if any, is not from this read.
    void setReadFailed(const QDateTime& time);
    /// The same of a read that the user cancelled.
    void setReadCancelled(const QDateTime& time);
    [[nodiscard]] bool isReadFailed() const { return m_failedAt.has_value(); }
    /// Whether a card is shown that is not from the last read.
    [[nodiscard]] bool isCardEarlier() const { return m_card.has_value() && isReadFailed(); }
    /// The card service is being connected to, and that takes longer than usual.
    void setConnecting(bool isConnecting) { m_isConnecting = isConnecting; }
    /// The last save wrote nothing, for that reason; an empty text once a save has succeeded.
    void setSaveFailure(const QString& text) { m_saveFailure = text; }
    /// Why the last request was refused; an empty text once another one was granted.
    void setNotice(const QString& text) { m_notice = text; }

    /// What the user was last told: the notice, or else the save that failed; nothing otherwise.
    [[nodiscard]] const QString& told() const { return m_notice.isEmpty() ? m_saveFailure : m_notice; }
    /// One line, or two: the card's, and the notice or else the save that failed.
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
    bool m_isCancelled = false; // the read that failed
    bool m_isConnecting = false;
    QString m_saveFailure;
    QString m_notice;
};
