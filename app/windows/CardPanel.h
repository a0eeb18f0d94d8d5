#pragma once

#include "app/models/PanelLine.h"

#include <QObject>
#include <QTimer>

class MVSimpleOpaqueView;
class PanelLineField;
class SpokenNotice;
class SummaryField;

/// The main window's panel: the card's summary, and below it the state of the card and the last message. Main thread
/// only.
class CardPanel final : public QObject
{
    Q_OBJECT

public:
    /// They belong to the window and must outlive the panel.
    struct Widgets
    {
        MVSimpleOpaqueView& view;
        SummaryField& summary;
        PanelLineField& line;
    };

    explicit CardPanel(const Widgets& widgets);

    /// Sets the colours and shows that no card has been read.
    void clear();
    /// Shows no card any more, and tells screen readers what the reader's state asks for now.
    void forgetCard();
    /// Tells screen readers whose card the summary shows.
    void announceCard();
    /// Shows when the card was read or its file opened.
    void setCardTime(PanelLine::CardOrigin origin, const QDateTime& time);
    /// Shows that a read failed, so that the shown card is an earlier one, until the next card.
    void setReadFailed(const QDateTime& time);
    /// The same for a cancelled read.
    void setReadCancelled(const QDateTime& time);
    /// Shows why the last save failed; an empty text after a success.
    void setSaveFailure(const QString& text);
    /// Shows why a request was refused, and tells screen readers; an empty text or a read clears it.
    void setNotice(const QString& text);
    /// A new request: the last one's result and notice are gone.
    void beginRequest();
    void clearResult();
    /// Shows that the attestation was saved, with a link to the file, and tells screen readers.
    void setSaved(const QString& path);
    /// The same for an attestation that the printer's queue has.
    void setSent(const QString& queue, const QDateTime& time);
    /// Shows what the reader's state asks the user to do, and tells screen readers.
    void setReader(const ReaderChange& change);
    /// The same for anything else that was done.
    void setDone(const QString& text);
    /// The tool tip of the summary: the insured person's number in groups.
    void setNumber(const QString& grouped);
    /// Shows, in place of the time, that the card service is being connected, once that takes longer than usual.
    void setConnecting(bool isConnecting);

Q_SIGNALS:
    /// The saved file, or its folder, is to be opened.
    void fileRequested(const QString& path);
    void folderRequested(const QString& path);

private:
    void showLine();
    void announce(const QString& text);

    Widgets m_widgets;
    PanelLine m_line;
    QString m_cardNotice;         // what was announced of the shown card; empty if that is an earlier one
    SpokenNotice* m_spokenNotice; // belongs to the view, as the next one
    SpokenNotice* m_formerNotice; // what was announced before
    QTimer m_connectingTimer;     // runs while connecting takes no longer than usual
};
