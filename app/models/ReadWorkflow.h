#pragma once

#include "app/models/BindObserver.h"
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

/// The window's side of reading a card. Called on the main thread only.
class ReadWorkflowDelegate
{
public:
    ReadWorkflowDelegate() = default;
    Q_DISABLE_COPY(ReadWorkflowDelegate)
    virtual ~ReadWorkflowDelegate() = default;

    /// Shows the progress sheet, or changes its message.
    virtual void beginSheet(const QString& message) = 0;
    /// Closes the progress sheet.
    virtual void endSheed() = 0;
    /// A bind has started or ended. It has no sheet: earlier cards stay usable.
    virtual void showBinding(bool isBinding) = 0;
    /// Beeps and shows the reason.
    virtual void refuse(const QString& reason) = 0;
    virtual void presentError(const Error& error) = 0;
    /// The current card, if any.
    [[nodiscard]] virtual const std::optional<CardRecord>& currentVitale() const = 0;
    /// Makes it the current card.
    virtual void cardWasRead(const CardRecord& record) = 0;
    /// A read failed: the current card, if any, is an earlier one.
    virtual void readFailed() = 0;
    /// The same for a cancelled read.
    virtual void readCancelled() = 0;
    /// Writes the copy for support after a read that the user asked for.
    virtual void saveXMLIfNeeded() = 0;
};

/// Reads cards: binds the card service if needed, asks the reader, and informs the window. One read and one bind at a
/// time. When another bind replaces its own, a waiting read waits for the other one. The client's handlers do nothing
/// after its end. Main thread only.
class ReadWorkflow final : public QObject
{
    Q_OBJECT

public:
    /// Whether there is a card, and the error of a failed read.
    using CompletionHandler = std::function<void(bool, const std::optional<Error>&)>;

    /// Settings and delegate must outlive it.
    ReadWorkflow(std::shared_ptr<LVitAccess> client, const UserDefaults& settings, ReadWorkflowDelegate& delegate);

    /// Start: sets the client's access mode from the settings, then binds.
    void lVitInit();

    /// Binds the card service and posts the bind notification. Does nothing during another bind of its own.
    void bind();

    /// Reads a card in any case. Refused while a read is running or waiting.
    void readVitale();

    /// Reads a card only if there is none. The handler is called at once, after the read, or never if the bind fails;
    /// with (false, nullopt) during another read, or when the read is cancelled.
    void readVitaleIfNeedWithCompletionHandler(CompletionHandler handler);

    /// Cancels the read: its result is dropped, and the next read starts a new card service.
    void cancelRead();

    /// Whether the reader is being asked.
    [[nodiscard]] bool isReading() const { return m_askedRead->load() != noRead; }

    /// Whether a card may still arrive: a read waits for the bind or the reader, or its result is on the way.
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
    BindObserver m_bindObserver;
    bool m_isBinding = false;
    // Another bind has replaced the one that the read waits for.
    bool m_waitsForOtherBind = false;
    // A read that waits for a bind, if any.
    Step m_dueStep;
    ReadNumber m_lastRead = noRead;
    // Reads without a result on the main thread. The handler is empty for a read by readVitale().
    DueReads m_dueReads;
    // The number of the running read. Shared with handlers on the client's thread, which may run after this object's
    // end or after a cancelled read.
    std::shared_ptr<std::atomic<ReadNumber>> m_askedRead = std::make_shared<std::atomic<ReadNumber>>(noRead);
};
