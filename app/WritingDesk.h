#pragma once

#include "platform/files/FileWorker.h"

#include <QObject>
#include <QPointer>

#include <chrono>

class MainWindow;
class SavingSheet;

/// What is written to the disk for the main window, and the end of the application meanwhile. A slow disk holds up
/// nothing: all of it is written aside, and a sheet says so. Main thread only.
class WritingDesk final : public QObject
{
    Q_OBJECT

public:
    /// The window must outlive it.
    explicit WritingDesk(MainWindow& window);
    WritingDesk(const WritingDesk&) = delete;
    WritingDesk& operator=(const WritingDesk&) = delete;
    ~WritingDesk() override;

    /// Begins the work, or queues it. What it gives back runs on the main thread, with no sheet in the way.
    void write(FileWorker::Work work);

    /// The user leaves: ends the application once the files that are being written are whole.
    void quit();
    /// The same, even when a save fails meanwhile.
    void terminate();
    /// How long quit() and terminate() wait, with the windows, for a disk that does not answer. After that FileWorker
    /// waits for its own time without them.
    static constexpr std::chrono::seconds patienceAtTheEnd{8};
    /// A save has failed, which the user is to see: whoever has quit meanwhile stays.
    void stayAfterFailedSave();

Q_SIGNALS:
    /// All that was to be written is done.
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
