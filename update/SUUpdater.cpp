#include "update/SUUpdater.h"

#include "platform/UserDefaults.h"
#include "platform/gui/WindowActivation.h"
#include "platform/gui/Workspace.h"
#include "update/UpdateSession.h"
#include "update/UpdateWindow.h"

#include <QDebug>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using State = UpdateSession::State;

namespace {

constexpr QLatin1StringView lastCheckTimeKey{"SULastCheckTime"};
constexpr QLatin1StringView skippedVersionKey{"SUSkippedVersion"};

} // namespace

SUUpdater::SUUpdater(UpdateConfiguration configuration, std::unique_ptr<UserDefaults> defaults, QObject* parent)
    : QObject(parent)
    , m_configuration(std::move(configuration))
    , m_defaults(std::move(defaults))
{
    m_timer.setSingleShot(true);
    // The others may come minutes too soon.
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &SUUpdater::checkByItself);
    planNextCheck();
}

SUUpdater::~SUUpdater() = default;

std::optional<QDateTime> SUUpdater::lastUpdateCheckDate() const
{
    const QVariant stored = m_defaults->object(lastCheckTimeKey);
    if (stored.typeId() != QMetaType::QDateTime || !stored.toDateTime().isValid())
        return std::nullopt;
    return stored.toDateTime();
}

void SUUpdater::checkForUpdates([[maybe_unused]] const QObject* sender)
{
    const bool isIdle = m_session == nullptr;
    if (isIdle)
        makeSession();
    if (!m_window)
        makeWindow();
    if (isIdle)
        startSession();
    bringToFront(*m_window);
}

void SUUpdater::planNextCheck()
{
    if (!m_configuration.automaticChecks || m_configuration.isPackaged || !m_configuration.feed)
        return;
    const UpdateLimits& limits = m_configuration.limits;
    const std::optional<QDateTime> last = lastUpdateCheckDate();
    const QDateTime now = QDateTime::currentDateTime();
    std::chrono::milliseconds delay = limits.firstCheck;
    // A date to come was taken from a clock that was wrong.
    if (last && *last <= now)
        delay = std::max(delay, limits.interval - std::chrono::milliseconds(last->msecsTo(now)));
    m_timer.start(delay);
}

void SUUpdater::checkByItself()
{
    // One that the user watches is as good.
    if (m_session)
        return planNextCheck();
    makeSession();
    startSession();
}

void SUUpdater::makeSession()
{
    m_session = std::make_unique<UpdateSession>(m_configuration);
    connect(m_session.get(), &UpdateSession::stateChanged, this, &SUUpdater::follow);
}

void SUUpdater::startSession()
{
    m_session->start();
    if (!m_session || m_session->state() != State::Checking)
        return;
    // Whatever comes of it: a server that fails is not asked again and again.
    m_defaults->setObject(lastCheckTimeKey, QDateTime::currentDateTime());
    planNextCheck();
}

void SUUpdater::makeWindow()
{
    m_window = std::make_unique<UpdateWindow>(*m_session);
    connect(m_window.get(), &UpdateWindow::skipRequested, this,
            [this] { m_defaults->setObject(skippedVersionKey, m_session->item().version); });
    connect(m_window.get(), &UpdateWindow::finished, this, &SUUpdater::close);
}

void SUUpdater::follow()
{
    const State state = m_session->state();
    if (m_window) {
        if (state == State::Ready)
            m_window->setTakenByDesktop(Workspace::openFile(m_session->packagePath()));
        return;
    }
    // Nobody asked: only news that the user has not refused are worth a window, and it does not take the keyboard away.
    if (state == State::Checking)
        return;
    if (state == State::Available && m_session->item().version != m_defaults->object(skippedVersionKey).toString()) {
        makeWindow();
        m_window->setAttribute(Qt::WA_ShowWithoutActivating);
        m_window->show();
        return;
    }
    if (state == State::Failed)
        qWarning().noquote() << "The search for updates failed:" << textOf(m_session->failure());
    // Its own signal is being delivered.
    m_session.release()->deleteLater();
}

void SUUpdater::close()
{
    // A search or a download that still runs ends here. The window is in the middle of its own signal.
    m_window.release()->deleteLater();
    m_session.reset();
}
