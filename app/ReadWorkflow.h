#pragma once

#include "card/BindOutcome.h"
#include "card/CardRecord.h"
#include "platform/Error.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class LVitAccess;

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
    virtual void beep() = 0;
    virtual void presentError(const Error& error) = 0;
    /// The card that is there already, if there is one.
    [[nodiscard]] virtual const std::optional<CardRecord>& currentVitale() const = 0;
    /// Keeps the card as the current one and shows its summary.
    virtual void cardWasRead(const CardRecord& record) = 0;
    /// The copy for support, after a read that was asked for as such.
    virtual void saveXMLIfNeeded() = 0;
};

/// Reads cards: binds the card service when it is not bound, asks the reader, and tells the window. One read at a time,
/// one bind at a time. Main thread only; the client's handlers that come after its end do nothing.
class ReadWorkflow final : public QObject
{
    Q_OBJECT

public:
    /// Receives whether a card is there and, after a read that failed, why.
    using CompletionHandler = std::function<void(bool, const std::optional<Error>&)>;

    /// The delegate must outlive it.
    ReadWorkflow(std::shared_ptr<LVitAccess> client, ReadWorkflowDelegate& delegate);
    ~ReadWorkflow() override;

    /// Start-up of the card service: hands the client the access mode of the settings, then binds.
    void lVitInit();

    /// Binds the card service and posts the bind notification with the outcome. While a bind is under way no other is
    /// begun.
    void bind();

    /// Reads the card now, whatever was read before. Beeps when a read is under way, or waits for the bind.
    void readVitale();

    /// Sees to it that a card is there, and reads one only when there is none. The handler is called at once, or after
    /// the read, or never when the bind fails; while a read is under way at once with (false, nullopt).
    void readVitaleIfNeedWithCompletionHandler(CompletionHandler handler);

    /// Whether the reader is being asked.
    [[nodiscard]] bool isReading() const { return m_isReading->load(); }

private:
    using Step = std::function<void()>;

    void runWhenBound(Step step);
    void finishBind(const BindOutcome& outcome);
    void readNow();
    void finishReadNow(bool success, const std::optional<Error>& error, const std::optional<CardRecord>& record);
    void readIfNeed(const CompletionHandler& handler);
    void finishReadIfNeed(bool success, const std::optional<Error>& error, const std::optional<CardRecord>& record);

    std::shared_ptr<LVitAccess> m_client;
    ReadWorkflowDelegate& m_delegate;
    bool m_isBinding = false;
    // The read that waits for the bind, if any.
    Step m_dueStep;
    // Shared with the handlers on the client's thread, which may come after this object's end.
    std::shared_ptr<std::atomic<bool>> m_isReading = std::make_shared<std::atomic<bool>>(false);
};
