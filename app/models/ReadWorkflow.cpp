#include "app/models/ReadWorkflow.h"

#include "app/models/CardServiceRequests.h"
#include "card/client/LVitAccess.h"
#include "support/MXLog.h"

#include <QPointer>

#include <utility>

using namespace Qt::StringLiterals;

ReadWorkflow::ReadWorkflow(std::shared_ptr<LVitAccess> client, const UserDefaults& settings,
                           ReadWorkflowDelegate& delegate)
    : m_client(std::move(client))
    , m_settings(settings)
    , m_delegate(delegate)
    , m_bindObserver([this] { finishOtherBind(true); }, [this](const auto&) { finishOtherBind(false); })
{
}

void ReadWorkflow::lVitInit()
{
    setAccessModeFromSettings(*m_client, m_settings);
    MXLog::logDebug("Initializing Vitale Access Mode : {}", m_client->accessMode());
    bind();
}

void ReadWorkflow::bind()
{
    // A second bind would end the first one's connection.
    if (std::exchange(m_isBinding, true))
        return;
    m_delegate.showBinding(true);
    bindCardService(*m_client, [self = QPointer(this)](const BindOutcome& outcome) {
        if (self)
            self->finishBind(outcome);
    });
}

void ReadWorkflow::finishBind(const BindOutcome& outcome)
{
    m_isBinding = false;
    if (isReplaced(outcome) && m_dueStep) {
        m_waitsForOtherBind = true;
        return;
    }
    m_delegate.showBinding(false);
    const Step step = std::exchange(m_dueStep, nullptr);
    postBindNotification(outcome);
    if (!step)
        return;
    if (outcome)
        step();
    else
        m_delegate.readFailed();
}

void ReadWorkflow::finishOtherBind(bool isBound)
{
    if (!std::exchange(m_waitsForOtherBind, false))
        return;
    m_delegate.showBinding(false);
    // Later, after all observers of the notification have run.
    QMetaObject::invokeMethod(this, [this, isBound] { finishWait(isBound); }, Qt::QueuedConnection);
}

void ReadWorkflow::finishWait(bool isBound)
{
    const Step step = std::exchange(m_dueStep, nullptr);
    if (!step)
        return;
    if (isBound)
        runWhenBound(step);
    else
        m_delegate.readFailed();
}

void ReadWorkflow::readVitale()
{
    if (isReading() || m_dueStep)
        m_delegate.refuse(u"Une lecture est déjà en cours."_s);
    else
        runWhenBound([this] { read(u"Lecture de la carte Vitale..."_s, nullptr); });
}

void ReadWorkflow::readVitaleIfNeedWithCompletionHandler(CompletionHandler handler)
{
    if (!isReading() && m_delegate.currentVitale())
        handler(true, std::nullopt);
    else if (isReading() || m_dueStep)
        handler(false, std::nullopt);
    else
        runWhenBound(
            [this, handler = std::move(handler)] { read(u"Lecture de la carte vitale en cours…"_s, handler); });
}

void ReadWorkflow::runWhenBound(Step step)
{
    // Not initialized(): that is also true when the service refused the readers.
    if (m_client->bound()) {
        step();
        return;
    }
    m_dueStep = std::move(step);
    bind();
}

/// With a handler, the next read may start when the reader has answered; else when the window shows the result.
void ReadWorkflow::read(const QString& message, CompletionHandler handler)
{
    const ReadNumber number = ++m_lastRead;
    std::function<void()> whenAnswered = [] {};
    if (handler)
        whenAnswered = [number, askedRead = m_askedRead] { endRead(*askedRead, number); };
    m_delegate.beginSheet(message);
    m_dueReads.emplace(number, std::move(handler));
    m_askedRead->store(number);
    readCard(
        *m_client,
        [self = QPointer(this), number](const std::expected<CardRecord, Error>& outcome) {
            if (self)
                self->finishRead(number, outcome);
        },
        std::move(whenAnswered));
}

void ReadWorkflow::finishRead(ReadNumber number, const std::expected<CardRecord, Error>& outcome)
{
    const auto read = m_dueReads.extract(number);
    // Empty when the read was cancelled.
    if (read.empty())
        return;
    m_delegate.endSheed();
    if (outcome)
        m_delegate.cardWasRead(*outcome);
    else
        tellFailure(outcome.error());
    if (const CompletionHandler& handler = read.mapped()) {
        handler(outcome.has_value(), outcome ? std::nullopt : std::optional(outcome.error()));
        return;
    }
    if (outcome)
        m_delegate.saveXMLIfNeeded();
    endRead(*m_askedRead, number);
}

void ReadWorkflow::endRead(std::atomic<ReadNumber>& askedRead, ReadNumber number)
{
    askedRead.compare_exchange_strong(number, noRead);
}

void ReadWorkflow::cancelRead()
{
    const DueReads reads = std::exchange(m_dueReads, {});
    if (reads.empty())
        return;
    m_client->cancelReads();
    m_askedRead->store(noRead);
    m_delegate.endSheed();
    m_delegate.readCancelled();
    for (const auto& [number, handler] : reads) {
        if (handler)
            handler(false, std::nullopt);
    }
}

void ReadWorkflow::tellFailure(const Error& error)
{
    m_delegate.readFailed();
    m_delegate.presentError(error);
}
