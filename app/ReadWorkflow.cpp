#include "app/ReadWorkflow.h"

#include "app/CardReading.h"
#include "card/LVitAccess.h"
#include "platform/MainQueue.h"
#include "support/MXLog.h"

#include <QPointer>

#include <utility>

using namespace Qt::StringLiterals;

ReadWorkflow::ReadWorkflow(std::shared_ptr<LVitAccess> client, ReadWorkflowDelegate& delegate)
    : m_client(std::move(client))
    , m_delegate(delegate)
{
}

ReadWorkflow::~ReadWorkflow() = default;

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
    m_delegate.showBinding(false);
    const Step step = std::exchange(m_dueStep, nullptr);
    postBindNotification(outcome);
    if (!outcome && step)
        step();
}

void ReadWorkflow::readVitale()
{
    if (isReading() || m_dueStep)
        m_delegate.beep();
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
    if (m_client->initialized()) {
        step();
        return;
    }
    m_dueStep = std::move(step);
    bind();
}

void ReadWorkflow::readNow()
{
    m_delegate.beginSheet(u"Lecture de la carte Vitale..."_s);
    m_isReading->store(true);
    m_client->readeVitaleWithCompletionHandler([self = QPointer(this)](bool success, const std::optional<Error>& error,
                                                                       const std::optional<CardRecord>& record) {
        postToMainQueue([self, success, error, record] {
            if (self)
                self->finishReadNow(success, error, record);
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
    } else if (error) {
        m_delegate.presentError(*error);
    }
    m_isReading->store(false);
}

void ReadWorkflow::readIfNeed(const CompletionHandler& handler)
{
    m_delegate.beginSheet(u"Lecture de la carte vitale en cours…"_s);
    m_isReading->store(true);
    m_client->readeVitaleWithCompletionHandler(
        [self = QPointer(this), isReading = m_isReading, handler](bool success, const std::optional<Error>& error,
                                                                  const std::optional<CardRecord>& record) {
            isReading->store(false);
            postToMainQueue([self, handler, success, error, record] {
                if (!self)
                    return;
                self->finishReadIfNeed(success, error, record);
                handler(success, error);
            });
        });
}

void ReadWorkflow::finishReadIfNeed(bool success, const std::optional<Error>& error,
                                    const std::optional<CardRecord>& record)
{
    m_delegate.endSheed();
    if (success && record)
        m_delegate.cardWasRead(*record);
    else if (error)
        m_delegate.presentError(*error);
}
