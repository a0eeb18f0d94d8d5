#pragma once

#include "app/models/ReadWorkflow.h"
#include "card/CardKeys.h"
#include "card/client/CardServiceKeys.h"
#include "card/client/LVitAccess.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "tests/fakes/FakeService.h"

#include <QStringList>
#include <QTest>
#include <QThread>

#include <memory>
#include <optional>

// Notes of a ReadingDesk: a refused read, the two sheets, and all notes of a read that needs a bind.
namespace ReadingNotes {
inline const QString busy = QStringLiteral("refused Une lecture est déjà en cours.");
inline const QString nowSheet = QStringLiteral("sheet Lecture de la carte Vitale...");
inline const QString neededSheet = QStringLiteral("sheet Lecture de la carte vitale en cours…");
inline const QStringList readAfterBind{QStringLiteral("bind success"), nowSheet, QStringLiteral("end of sheet"),
                                       QStringLiteral("card SPECIMEN"), QStringLiteral("copy")};
inline const QStringList generalErrorAfterBind{QStringLiteral("bind success"), nowSheet, QStringLiteral("end of sheet"),
                                               QStringLiteral("read failed"), QStringLiteral("error -10")};
} // namespace ReadingNotes

/// A card service, a read workflow, and a window that records its calls in order.
class ReadingDesk final : public ReadWorkflowDelegate
{
public:
    explicit ReadingDesk(const FakeScript& script = {}, ChannelLimits limits = {})
        : service(script)
        , client(std::make_shared<LVitAccess>(service.command(), limits))
        , workflow(std::make_unique<ReadWorkflow>(client, settings, *this))
    {
        NotificationCenter::defaultCenter().addObserver(
            this, BindNotification::name.toString(),
            [this](const Notification& notification) { noteBind(notification); });
    }
    /// A desk with a bound card service and no notes; null when the bind fails.
    static std::unique_ptr<ReadingDesk> bound(const FakeScript& script = {})
    {
        auto desk = std::make_unique<ReadingDesk>(script);
        desk->workflow->bind();
        const bool isBound = QTest::qWaitFor([&desk] { return !desk->notes.isEmpty(); });
        desk->notes.clear();
        return isBound && desk->client->initialized() ? std::move(desk) : nullptr;
    }
    ~ReadingDesk() override { NotificationCenter::defaultCenter().removeObserver(this); }
    Q_DISABLE_COPY_MOVE(ReadingDesk)

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

    /// Requests a card, always or only if there is none.
    void read(bool ifNeeded)
    {
        if (ifNeeded)
            readIfNeed();
        else
            workflow->readVitale();
    }
    /// Requests a card, and records what the handler receives.
    void readIfNeed()
    {
        workflow->readVitaleIfNeedWithCompletionHandler([this](bool success, const std::optional<Error>& error) {
            note(QStringLiteral("handler %1 %2").arg(success).arg(error ? error->code() : 0));
        });
    }

    /// The number of requests of a kind that the service has received.
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
    /// Whether every note was made on the main thread.
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
