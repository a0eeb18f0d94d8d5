#include "update/UpdateRun.h"

#include "platform/UserDefaults.h"
#include "platform/gui/WindowActivation.h"
#include "platform/gui/Workspace.h"
#include "update/UpdateSession.h"
#include "update/UpdateWindow.h"
#include "update/client/UpdateWords.h"

#include <QDateTime>
#include <QDebug>

#include <utility>

using namespace Qt::StringLiterals;
using State = UpdateSession::State;

UpdateRun::UpdateRun(UpdateConfiguration configuration, std::unique_ptr<UserDefaults> defaults)
    : m_configuration(std::move(configuration))
    , m_defaults(std::move(defaults))
{
}

UpdateRun::~UpdateRun() = default;

void UpdateRun::checkForUpdates()
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

void UpdateRun::checkByItself()
{
    if (m_session)
        return;
    makeSession();
    startSession();
}

void UpdateRun::makeSession()
{
    m_session = std::make_unique<UpdateSession>(m_configuration);
    connect(m_session.get(), &UpdateSession::stateChanged, this, &UpdateRun::follow);
}

void UpdateRun::startSession()
{
    m_session->start();
    if (!m_session || m_session->state() != State::Checking)
        return;
    // Stored also after a failure, so that the server is not asked too often.
    m_defaults->setObject(lastCheckTimeKey, QDateTime::currentDateTime());
    // The application reads this setting.
    m_defaults->synchronize();
}

void UpdateRun::makeWindow()
{
    m_window = std::make_unique<UpdateWindow>(*m_session);
    connect(m_window.get(), &UpdateWindow::skipRequested, this,
            [this] { m_defaults->setObject(skippedVersionKey, m_session->item().version); });
    connect(m_window.get(), &UpdateWindow::finished, this, &UpdateRun::close);
}

void UpdateRun::follow()
{
    const State state = m_session->state();
    if (m_window) {
        if (state == State::Ready)
            m_window->setTakenByDesktop(Workspace::openFile(m_session->packagePath()));
        return;
    }
    // Automatic check: a window opens only for a version that was not skipped, and does not take the focus.
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
    // Deleted later: this runs in its signal.
    m_session.release()->deleteLater();
    Q_EMIT finished();
}

void UpdateRun::close()
{
    // Ends a running search or download. The window is deleted later because this runs in its signal.
    m_window.release()->deleteLater();
    m_session.reset();
    Q_EMIT finished();
}
