#pragma once

#include "card/CardRecord.h"
#include "card/client/BindOutcome.h"
#include "platform/Error.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <optional>

class LVitAccess;
class UserDefaults;

/// What the reading of a card needs of the window around it. Called on the main thread only.
class ReadWorkflowDelegate
{
public:
    ReadWorkflowDelegate() = default;
    ReadWorkflowDelegate(const ReadWorkflowDelegate&) = delete;
    ReadWorkflowDelegate& operator=(const ReadWorkflowDelegate&) = delete;
    virtual ~ReadWorkflowDelegate() = default;

    /// Shows the progress sheet, or changes the message of the one that is shown.
    virtual void beginSheet(const QString& message) = 0;
    /// Closes the progress sheet, if it is shown.
    virtual void endSheed() = 0;
    /// The card service is being bound, or is not any more. A bind has no sheet: cards that are there stay usable.
    virtual void showBinding(bool isBinding) = 0;
    /// A request cannot be granted now: beeps, and says why.
    virtual void refuse(const QString& reason) = 0;
    virtual void presentError(const Error& error) = 0;
    /// The card that is there already, if there is one.
    [[nodiscard]] virtual const std::optional<CardRecord>& currentVitale() const = 0;
    /// Keeps the card as the current one and shows its summary.
    virtual void cardWasRead(const CardRecord& record) = 0;
    /// A read has failed: the card that is there, if any, is an earlier one.
    virtual void readFailed() = 0;
    /// A read was cancelled: the same is true.
    virtual void readCancelled() = 0;
    /// The copy for support, after a read that was asked for as such.
    virtual void saveXMLIfNeeded() = 0;
};

/// Reads cards: binds the card service when it is not bound, asks the reader, and tells the window. One read at a time,
/// one bind at a time. A bind from elsewhere may replace its own: the read that waits then waits for that one. Main
/// thread only; the client's handlers that come after its end do nothing.
class ReadWorkflow final : public QObject
{
    Q_OBJECT

public:
    /// Receives whether a card is there and, after a read that failed, why.
    using CompletionHandler = std::function<void(bool, const std::optional<Error>&)>;

    /// The settings and the delegate must outlive it.
    ReadWorkflow(std::shared_ptr<LVitAccess> client, const UserDefaults& settings, ReadWorkflowDelegate& delegate);
    ReadWorkflow(const ReadWorkflow&) = delete;
    ReadWorkflow& operator=(const ReadWorkflow&) = delete;
    ~ReadWorkflow() override;

    /// Start-up of the card service: hands the client the access mode of the settings, then binds.
    void lVitInit();

    /// Binds the card service and posts the bind notification with the outcome. While a bind is under way no other is
    /// begun.
    void bind();

    /// Reads the card now, whatever was read before. Beeps when a read is under way, or waits for the bind.
    void readVitale();

    /// Sees to it that a card is there, and reads one only when there is none. The handler is called at once, or after
    /// the read, or never when the bind fails; with (false, nullopt) at once while a read is under way, and when the
    /// read is cancelled.
    void readVitaleIfNeedWithCompletionHandler(CompletionHandler handler);

    /// Gives up the read under way: what it comes to is dropped, and the card service is replaced by the next read.
    /// Nothing when no read is under way.
    void cancelRead();

    /// Whether the reader is being asked.
    [[nodiscard]] bool isReading() const { return m_askedRead->load() != noRead; }

    /// Whether a read was asked for whose card may still come: it waits for the bind, or for the reader, or its outcome
    /// is on its way to the main thread.
    [[nodiscard]] bool isUnderWay() const { return m_dueStep || !m_dueReads.empty(); }

private:
    using Step = std::function<void()>;
    using ReadNumber = quint64; // counts from 1
    static constexpr ReadNumber noRead = 0;
    using DueReads = std::map<ReadNumber, CompletionHandler>;

    void runWhenBound(Step step);
    void finishBind(const BindOutcome& outcome);
    void finishOtherBind(bool isBound);
    void finishWait(bool isBound);
    void read(const QString& message, CompletionHandler handler);
    void finishRead(ReadNumber number, const std::expected<CardRecord, Error>& outcome);
    void tellFailure(const Error& error);
    static void endRead(std::atomic<ReadNumber>& askedRead, ReadNumber number);

    std::shared_ptr<LVitAccess> m_client;
    const UserDefaults& m_settings;
    ReadWorkflowDelegate& m_delegate;
    bool m_isBinding = false;
    // A bind that is not from here has replaced the one that the read waits for.
    bool m_waitsForOtherBind = false;
    // The read that waits for a bind, if any.
    Step m_dueStep;
    ReadNumber m_lastRead = noRead;
    // The reads whose outcome has not come to the main thread, with the handlers of those that were needed.
    DueReads m_dueReads;
    // The read that the reader is asked for. Shared with the handlers on the client's thread, which may come after this
    // object's end, or after the read was cancelled and another one begun.
    std::shared_ptr<std::atomic<ReadNumber>> m_askedRead = std::make_shared<std::atomic<ReadNumber>>(noRead);
};
