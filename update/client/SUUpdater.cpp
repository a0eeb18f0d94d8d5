#include "update/client/SUUpdater.h"

#include "platform/UserDefaults.h"
#include "update/client/UpdateWords.h"

#include <QDebug>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

SUUpdater::SUUpdater(UpdateConfiguration configuration, QString program, std::unique_ptr<UserDefaults> defaults,
                     QObject* parent)
    : QObject(parent)
    , m_configuration(std::move(configuration))
    , m_program(std::move(program))
    , m_defaults(std::move(defaults))
{
    m_timer.setSingleShot(true);
    // Other timers may fire minutes early.
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &SUUpdater::checkByItself);
    if (m_configuration.automaticChecks && !m_configuration.isPackaged && m_configuration.feed)
        planNextCheck();
}

SUUpdater::~SUUpdater() = default;

std::optional<QDateTime> SUUpdater::lastUpdateCheckDate() const
{
    // The program is another process and has written the file.
    m_defaults->synchronize();
    const QVariant stored = m_defaults->object(lastCheckTimeKey);
    if (stored.typeId() != QMetaType::QDateTime || !stored.toDateTime().isValid())
        return std::nullopt;
    return stored.toDateTime();
}

void SUUpdater::checkForUpdates([[maybe_unused]] const QObject* sender)
{
    if (m_running)
        return m_running->showWindow();
    const std::error_code error = start({});
    if (!error)
        return;
    qWarning("The program for updates cannot be started: %s", error.message().c_str());
    Q_EMIT failed(
        Error(u"SUUpdater"_s, error.value(), updateFailedText.toString())
            .withDetail(u"Le programme des mises à jour n’a pas pu être lancé\u00A0: l’installation de Pelmora "
                        "est incomplète. Il faut le réinstaller."_s));
}

void SUUpdater::planNextCheck()
{
    m_timer.start(std::max(m_configuration.limits.firstCheck, untilNextIsDue()));
}

void SUUpdater::checkByItself()
{
    // A check by the user counts too.
    if (m_running || untilNextIsDue() > std::chrono::milliseconds::zero())
        return planNextCheck();
    if (const std::error_code error = start({byItselfOption}))
        qWarning("The program for updates cannot be started: %s", error.message().c_str());
    // Also after a failure, so that the server is not asked too often.
    m_timer.start(m_configuration.limits.interval);
}

std::chrono::milliseconds SUUpdater::untilNextIsDue() const
{
    const std::optional<QDateTime> last = lastUpdateCheckDate();
    const QDateTime now = QDateTime::currentDateTime();
    // A date in the future comes from a wrong clock.
    if (!last || *last > now)
        return std::chrono::milliseconds::zero();
    return std::max(std::chrono::milliseconds::zero(),
                    m_configuration.limits.interval - std::chrono::milliseconds(last->msecsTo(now)));
}

std::error_code SUUpdater::start(const QStringList& arguments)
{
    auto started = UpdateProgram::start(m_program, arguments);
    if (!started)
        return started.error();
    m_running = std::move(*started);
    connect(m_running.get(), &UpdateProgram::ended, this, [this](bool hasLeftRequest) {
        m_running.release()->deleteLater();
        if (hasLeftRequest)
            checkForUpdates(nullptr);
    });
    return {};
}
