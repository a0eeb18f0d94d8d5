#include "app/ReaderDesk.h"

#include "app/CardOccupation.h"
#include "app/desktop/SessionEvents.h"
#include "app/models/ReadWorkflow.h"
#include "app/windows/MainWindow.h"
#include "prefs/settings/MVSettings.h"

#include <QApplication>
#include <QTimer>

#include <utility>

ReaderDesk::ReaderDesk(const Surroundings& with)
    : m_with(with)
    , m_forgetting(with.settings, with.occupation)
    , m_unattendedRead(with.window)
{
    connect(&m_forgetting, &CardForgetting::due, this, &ReaderDesk::forgetDue);
}

ReaderDesk::~ReaderDesk() = default;

void ReaderDesk::start(std::shared_ptr<LVitAccess> client)
{
    m_observer =
        std::make_unique<ReaderObserver>(std::move(client), [this](const ReaderChange& change) { follow(change); });
    // Connecting to the system's bus takes time, which the start has not.
    QTimer::singleShot(0, this, &ReaderDesk::followSession);
}

void ReaderDesk::followSession()
{
    m_session = std::make_unique<SessionEvents>();
    connect(m_session.get(), &SessionEvents::locked, &m_forgetting, &CardForgetting::sessionLeft);
    connect(m_session.get(), &SessionEvents::aboutToSleep, &m_forgetting, &CardForgetting::sessionLeft);
    // What the reader told before the sleep may be out of date.
    connect(m_session.get(), &SessionEvents::resumed, this, [this] {
        if (!m_with.reading.isUnderWay())
            m_with.reading.bind();
    });
}

void ReaderDesk::stop()
{
    m_observer.reset();
    m_session.reset();
}

void ReaderDesk::follow(const ReaderChange& change)
{
    m_with.window.setReader(change);
    if (change.hasCardLeft)
        m_forgetting.cardLeft();
    if (change.hasCardCome && MVSettings::booleanPreferencesForKey(m_with.settings, Settings::readOnInsertion))
        readInsertedCard();
}

void ReaderDesk::readInsertedCard()
{
    const bool isDialogOpen = QApplication::activeModalWidget() != nullptr;
    if (isDialogOpen || m_with.occupation.firstOf(CardOccupation::anything) != CardOccupation::By::Nothing)
        return;
    m_unattendedRead.begin();
    m_with.reading.readVitale();
}
