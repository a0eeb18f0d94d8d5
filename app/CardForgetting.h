#pragma once

#include "app/models/PanelLine.h"

#include <QObject>
#include <QTimer>

#include <optional>

class CardOccupation;
class UserDefaults;

/// When the shown card is to be forgotten, as the settings say: when it leaves the reader, when the session is locked
/// or the machine sleeps, or after some minutes. A card that is read, printed or written is forgotten afterwards,
/// unless another one has taken its place. Main thread only.
class CardForgetting final : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive it.
    CardForgetting(const UserDefaults& settings, const CardOccupation& occupation);
    Q_DISABLE_COPY(CardForgetting)
    ~CardForgetting() override = default;

    /// A card is shown, in place of the earlier one.
    void cardShown(PanelLine::CardOrigin origin);
    /// A card has left the reader.
    void cardLeft();
    /// The session is locked, or the machine goes to sleep.
    void sessionLeft();
    /// The settings may have changed: the minutes count again.
    void followSettings();

Q_SIGNALS:
    /// The shown card is to be forgotten now.
    void due();

private:
    void forget();
    void restartTime();

    const UserDefaults& m_settings;
    const CardOccupation& m_occupation;
    std::optional<PanelLine::CardOrigin> m_shown;
    QTimer m_time{this};     // until the shown card is forgotten
    QTimer m_occupied{this}; // looks again whether the card is still used
};
