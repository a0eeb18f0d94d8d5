#pragma once

#include "app/models/ReaderObserver.h"

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
    /// No card is shown any more. What was told may name its patient, and is gone as well.
    void forgetCard();
    /// A read failed: the shown card, if any, is an earlier one.
    void setReadFailed(const QDateTime& time);
    /// The same for a cancelled read.
    void setReadCancelled(const QDateTime& time);
    [[nodiscard]] bool isReadFailed() const { return m_failedAt.has_value(); }
    /// Whether the shown card is not from the last read.
    [[nodiscard]] bool isCardEarlier() const { return m_card.has_value() && isReadFailed(); }
    /// What has happened to the reader. The line tells its state when that asks the user to do something.
    void setReader(const ReaderChange& change);
    /// Connecting to the card service takes longer than usual.
    void setConnecting(bool isConnecting) { m_isConnecting = isConnecting; }
    /// The last save failed for that reason; empty after a success.
    void setSaveFailure(const QString& text);
    /// Why the last request was refused; empty when it was not.
    void setNotice(const QString& text);
    /// The result of the last request: the attestation is in the file. It ends with the next card, failure or notice.
    void setSaved(const QString& path);
    /// The same: the printer's queue has the attestation.
    void setSent(const QString& queue, const QDateTime& time);
    /// The same for anything else.
    void setDone(const QString& text) { setResult({text, QString()}); }
    void clearResult() { m_result = {}; }

    /// The notice, or else the result, or else the failed save, or nothing.
    [[nodiscard]] const QString& told() const;
    /// The file whose name is the end of the text; empty when there is none.
    [[nodiscard]] QString savedPath() const { return m_notice.isEmpty() ? m_result.path : QString(); }
    /// The file's name as the text shows it, on one line.
    [[nodiscard]] static QString shownName(const QString& path);
    /// What the line tells of the reader or of connecting to it; empty when the reader's state asks for nothing.
    [[nodiscard]] QString readerPart() const;
    /// The card's line with the reader's state and, if there is one, that message.
    [[nodiscard]] QString text() const;

private:
    struct Card
    {
        CardOrigin origin;
        QDateTime time;
    };

    struct Result
    {
        QString text;
        QString path; // of the saved file
    };

    void setResult(Result result);
    [[nodiscard]] QString cardText() const;
    [[nodiscard]] QString cardPart() const;
    [[nodiscard]] QString failedReadText() const;

    std::optional<Card> m_card;
    std::optional<QDateTime> m_failedAt;
    bool m_isCancelled = false; // the read was cancelled
    bool m_isConnecting = false;
    std::optional<CardReaderState> m_reader;
    bool m_hasCardCome = false; // a card was inserted after the shown one was read, or after a failed read
    QString m_saveFailure;
    QString m_notice;
    Result m_result;
};
