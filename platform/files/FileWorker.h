#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

/// Does slow work with files on a thread of its own, one piece after another in the order of the calls, so that a slow
/// disk cannot hold up the windows. The thread comes with the work and goes when there is none. Main thread only.
class FileWorker final : public QObject
{
    Q_OBJECT

public:
    /// Runs on the worker's thread. What it gives back runs on the main thread.
    using Work = std::function<std::function<void()>()>;

    /// How long the end of a worker waits for the work that was begun: a disk may never answer.
    static constexpr std::chrono::milliseconds usualPatience{2000};

    explicit FileWorker(std::chrono::milliseconds patience = usualPatience);
    FileWorker(const FileWorker&) = delete;
    FileWorker& operator=(const FileWorker&) = delete;
    /// Waits for the work. When this takes too long, the rest is left to its thread and nothing is told any more.
    ~FileWorker() override;

    /// The one of the process, so that whoever wants to leave knows of all that is still being written.
    [[nodiscard]] static FileWorker& shared();

    /// Begins the work, or queues it. What it gives back runs if the asker is still there.
    void start(QObject* asker, Work work);

    /// From the start of a piece of work until what it gives back runs.
    [[nodiscard]] bool isBusy() const { return m_pending > 0; }

Q_SIGNALS:
    /// All work is done and its askers were told.
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
