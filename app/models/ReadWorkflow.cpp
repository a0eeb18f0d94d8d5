#include "app/models/ReadWorkflow.h"

#include "app/models/CardReading.h"
#include "card/client/CardServiceKeys.h"
#include "card/client/LVitAccess.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "support/MXLog.h"

#include <QPointer>

#include <utility>

using namespace Qt::StringLiterals;

ReadWorkflow::ReadWorkflow(std::shared_ptr<LVitAccess> client, ReadWorkflowDelegate& delegate)
    : m_client(std::move(client))
    , m_delegate(delegate)
{
    NotificationCenter::defaultCenter().addObserver(
        this, BindNotification::name.toString(), [this](const Notification& notification) {
            if (m_waitsForOtherBind)
                finishOtherBind(
                    notification.userInfo.value_or(QVariantMap()).value(BindNotification::status.toString()) ==
                    BindNotification::success.toString());
        });
}

ReadWorkflow::~ReadWorkflow()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

void ReadWorkflow::lVitInit()
{
    setAccessModeFromSettings(*m_client);
    MXLog::logDebug("Initializing Vitale Access Mode : {}", m_client->accessMode());
    bind();
}

void ReadWorkflow::bind()
{
    // A second bind would cut the first one's connection, and so make it fail.
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
    m_waitsForOtherBind = false;
    m_delegate.showBinding(false);
    // Once all who observe the bind know how it went.
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
        runWhenBound([this] { readNow(); });
}

void ReadWorkflow::readVitaleIfNeedWithCompletionHandler(CompletionHandler handler)
{
    if (!isReading() && m_delegate.currentVitale())
        handler(true, std::nullopt);
    else if (isReading() || m_dueStep)
        handler(false, std::nullopt);
    else
        runWhenBound([this, handler = std::move(handler)] { readIfNeed(handler); });
}

void ReadWorkflow::runWhenBound(Step step)
{
    // Not when it is initialized alone: that it is after a choice of readers that the service has refused, too.
    if (m_client->bound()) {
        step();
        return;
    }
    m_dueStep = std::move(step);
    bind();
}

ReadWorkflow::ReadNumber ReadWorkflow::beginRead(const QString& message, CompletionHandler handler)
{
    m_delegate.beginSheet(message);
    m_dueReads.emplace(++m_lastRead, std::move(handler));
    m_askedRead->store(m_lastRead);
    return m_lastRead;
}

void ReadWorkflow::readNow()
{
    const ReadNumber number = beginRead(u"Lecture de la carte Vitale..."_s, nullptr);
    m_client->readeVitaleWithCompletionHandler(
        [self = QPointer(this), number](bool success, const std::optional<Error>& error,
                                        const std::optional<CardRecord>& record) {
            postToMainQueue([self, number, success, error, record] {
                if (!self || !self->m_dueReads.contains(number))
                    return;
                self->m_dueReads.erase(number);
                self->finishReadNow(success, error, record);
                endRead(*self->m_askedRead, number);
            });
        });
}

void ReadWorkflow::finishReadNow(bool success, const std::optional<Error>& error,
                                 const std::optional<CardRecord>& record)
{
    m_delegate.endSheed();
    if (success && record) {
        m_delegate.cardWasRead(*record);
        m_delegate.saveXMLIfNeeded();
    } else {
        tellFailure(error);
    }
}

void ReadWorkflow::readIfNeed(CompletionHandler handler)
{
    const ReadNumber number = beginRead(u"Lecture de la carte vitale en cours…"_s, std::move(handler));
    m_client->readeVitaleWithCompletionHandler(
        [self = QPointer(this), number, askedRead = m_askedRead](bool success, const std::optional<Error>& error,
                                                                 const std::optional<CardRecord>& record) {
            endRead(*askedRead, number);
            postToMainQueue([self, number, success, error, record] {
                const auto read = self ? self->m_dueReads.extract(number) : DueReads::node_type();
                if (read.empty())
                    return;
                self->finishReadIfNeed(success, error, record);
                read.mapped()(success, error);
            });
        });
}

void ReadWorkflow::finishReadIfNeed(bool success, const std::optional<Error>& error,
                                    const std::optional<CardRecord>& record)
{
    m_delegate.endSheed();
    if (success && record)
        m_delegate.cardWasRead(*record);
    else
        tellFailure(error);
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

void ReadWorkflow::tellFailure(const std::optional<Error>& error)
{
    m_delegate.readFailed();
    if (error)
        m_delegate.presentError(*error);
}
