#pragma once

#include "app/models/PanelLine.h"
#include "card/CardRecord.h"
#include "platform/gui/SecretClipboard.h"

#include <optional>

class FrontWindow;
class MainWindow;

/// The card that the main window shows, and what is copied of it. Main thread only.
class ShownCard
{
public:
    /// Both must outlive it.
    ShownCard(MainWindow& window, FrontWindow& front);

    /// Nothing until a card is shown, and after it is forgotten.
    [[nodiscard]] const std::optional<CardRecord>& record() const { return m_record; }

    /// Shows the card, in place of the earlier one.
    void show(const CardRecord& record, PanelLine::CardOrigin origin);
    /// Removes it from the window and, if it was copied, from the clipboard.
    void forget();

    /// These copy for a while the insured person's number and the name. Refused without a card.
    void copyNumber();
    void copyName();

private:
    void copy(const QString& text, const QString& done);

    MainWindow& m_window;
    FrontWindow& m_front;
    SecretClipboard m_clipboard;
    std::optional<CardRecord> m_record;
};
