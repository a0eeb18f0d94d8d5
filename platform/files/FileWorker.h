#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

/// Runs slow work with files on its own thread, one task after another, so that a slow disk does not block the windows.
/// The thread exists only while there is work. Main thread only.
class FileWorker final : public QObject
{
    Q_OBJECT

public:
    /// Runs on the worker's thread. The function that it returns runs on the main thread.
    using Work = std::function<std::function<void()>()>;

    /// How long the destructor waits for the running task: a disk may never answer.
    static constexpr std::chrono::milliseconds usualPatience{2000};

    explicit FileWorker(std::chrono::milliseconds patience = usualPatience);
    Q_DISABLE_COPY(FileWorker)
    /// Waits for the work. After the time limit the thread is detached and no results are delivered.
    ~FileWorker() override;

    /// The process-wide worker: before the program ends, it must know of every file that is still being written.
    [[nodiscard]] static FileWorker& shared();

    /// Starts the work, or queues it. Its result runs only if the asker still exists.
    void start(QObject* asker, Work work);

    /// True from the start of a task until its result has run.
    [[nodiscard]] bool isBusy() const { return m_pending > 0; }

Q_SIGNALS:
    /// All work is done and all results have run.
    void ended();

private:
    struct Shared;

    static void work(const std::shared_ptr<Shared>& shared);
    void finish(QObject* asker, const std::function<void()>& afterwards);

    std::chrono::milliseconds m_patience;
    int m_pending = 0;
    std::shared_ptr<Shared> m_shared; // the thread may outlive this object
    std::thread m_thread;
};
