#pragma once

#include "platform/files/FileWorker.h"

#include <QObject>
#include <QPointer>

#include <chrono>

class MainWindow;
class SavingSheet;

/// Writes files for the main window on another thread, with a sheet during a slow write, and delays the end of the
/// application meanwhile. Main thread only.
class WritingDesk final : public QObject
{
    Q_OBJECT

public:
    /// The window must outlive it.
    explicit WritingDesk(MainWindow& window);
    Q_DISABLE_COPY(WritingDesk)
    ~WritingDesk() override;

    /// Starts the work, or queues it. Its result runs on the main thread after the sheet is closed.
    void write(FileWorker::Work work);

    /// Ends the application at the user's request, after all files have been written.
    void quit();
    /// The same, also when a save fails meanwhile.
    void terminate();
    /// How long quit() and terminate() wait, with visible windows, for a disk that does not answer. Then FileWorker
    /// waits for its own limit without them.
    static constexpr std::chrono::seconds patienceAtTheEnd{8};
    /// A save has failed: cancels quit(), so that the user sees the error.
    void stayAfterFailedSave();

Q_SIGNALS:
    /// All files have been written.
    void ended();

private:
    enum class Leaving
    {
        No,
        UnlessSaveFails,
        InAnyCase
    };

    void finish();
    void endOnceWritten();

    MainWindow& m_window;
    QPointer<SavingSheet> m_sheet; // belongs to the window
    Leaving m_leaving = Leaving::No;
};
