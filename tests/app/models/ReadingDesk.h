#pragma once

#include "app/models/ReadWorkflow.h"
#include "card/CardKeys.h"
#include "card/client/CardServiceKeys.h"
#include "card/client/LVitAccess.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "tests/fakes/FakeService.h"

#include <QStringList>
#include <QThread>

#include <memory>
#include <optional>

/// A card service, the reading of cards, and a window that notes what it is told, in order.
class ReadingDesk final : public ReadWorkflowDelegate
{
public:
    explicit ReadingDesk(const FakeScript& behaviour = {}, ChannelLimits limits = {})
        : client(std::make_shared<LVitAccess>(service.command(behaviour), limits))
        , workflow(std::make_unique<ReadWorkflow>(client, settings, *this))
    {
        NotificationCenter::defaultCenter().addObserver(
            this, BindNotification::name.toString(),
            [this](const Notification& notification) { noteBind(notification); });
    }
    ~ReadingDesk() override { NotificationCenter::defaultCenter().removeObserver(this); }
    ReadingDesk(const ReadingDesk&) = delete;
    ReadingDesk& operator=(const ReadingDesk&) = delete;

    void beginSheet(const QString& message) override { note(QStringLiteral("sheet ") + message); }
    void endSheed() override { note(QStringLiteral("end of sheet")); }
    void showBinding(bool isBinding) override { showsBinding = isBinding; }
    void refuse(const QString& reason) override { note(QStringLiteral("refused ") + reason); }
    void presentError(const Error& error) override { note(QStringLiteral("error %1").arg(error.code())); }
    [[nodiscard]] const std::optional<CardRecord>& currentVitale() const override { return card; }
    void cardWasRead(const CardRecord& record) override
    {
        card = record;
        note(QStringLiteral("card ") + record.text(CardKey::lastName).value_or(QStringLiteral("?")));
    }
    void readFailed() override { note(QStringLiteral("read failed")); }
    void readCancelled() override { note(QStringLiteral("read cancelled")); }
    void saveXMLIfNeeded() override { note(QStringLiteral("copy")); }

    /// Asks for a card, and notes what the handler receives.
    void readIfNeed()
    {
        workflow->readVitaleIfNeedWithCompletionHandler([this](bool success, const std::optional<Error>& error) {
            note(QStringLiteral("handler %1 %2").arg(success).arg(error ? error->code() : 0));
        });
    }

    /// How often the service was asked for something.
    [[nodiscard]] qsizetype count(const QString& command) const
    {
        return service.requested(QStringLiteral("Command")).count(command);
    }
    [[nodiscard]] qsizetype binds() const { return count(QStringLiteral("init")); }
    [[nodiscard]] qsizetype reads() const { return count(QStringLiteral("vitale_read")); }

    FakeService service;
    UserDefaults settings{service.filePath(QStringLiteral("Pelmora.conf"))};
    std::shared_ptr<LVitAccess> client;
    std::unique_ptr<ReadWorkflow> workflow;
    std::optional<CardRecord> card;
    QStringList notes;
    bool showsBinding = false;
    /// Whether every note was taken on the main thread.
    bool isOnMainThread = true;

private:
    void noteBind(const Notification& notification)
    {
        const QVariantMap information = notification.userInfo.value_or(QVariantMap());
        const std::optional<Error> error = errorInValue(information.value(BindNotification::error.toString()));
        const QString status = information.value(BindNotification::status.toString()).toString();
        note(QStringLiteral("bind ") + status + (error ? QStringLiteral(" %1").arg(error->code()) : QString()));
    }

    void note(const QString& line)
    {
        isOnMainThread = isOnMainThread && QThread::currentThread() == m_mainThread;
        notes.append(line);
    }

    QThread* m_mainThread = QThread::currentThread();
};
