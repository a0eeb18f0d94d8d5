#pragma once

#include "app/CardForgetting.h"
#include "app/UnattendedRead.h"
#include "app/models/ReaderObserver.h"

#include <QObject>

#include <memory>

class LVitAccess;
class ReadWorkflow;
class SessionEvents;

/// What follows when cards come and leave: the window shows the reader's state, a card is read by itself or forgotten,
/// as the settings say. After the machine's sleep the reader is bound again. Main thread only.
class ReaderDesk final : public QObject
{
    Q_OBJECT

public:
    /// All of them outlive it, except for the client, which it shares.
    struct Surroundings
    {
        const UserDefaults& settings;
        MainWindow& window;
        ReadWorkflow& reading;
        const CardOccupation& occupation;
    };

    explicit ReaderDesk(const Surroundings& with);
    Q_DISABLE_COPY(ReaderDesk)
    ~ReaderDesk() override;

    /// Follows the client's reader and the user's session until stop().
    void start(std::shared_ptr<LVitAccess> client);
    void stop();

    /// A card is shown, in place of the earlier one.
    void cardShown(PanelLine::CardOrigin origin) { m_forgetting.cardShown(origin); }
    /// The settings may have changed.
    void followSettings() { m_forgetting.followSettings(); }
    [[nodiscard]] UnattendedRead& unattendedRead() { return m_unattendedRead; }

Q_SIGNALS:
    /// The shown card is to be forgotten.
    void forgetDue();

private:
    void follow(const ReaderChange& change);
    void readInsertedCard();
    void followSession();

    Surroundings m_with;
    CardForgetting m_forgetting;
    UnattendedRead m_unattendedRead;
    std::unique_ptr<ReaderObserver> m_observer;
    std::unique_ptr<SessionEvents> m_session; // null before the start has ended
};
