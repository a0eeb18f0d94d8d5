#include "service/DeadlineLibrary.h"

#include "service/MemoryClearing.h"
#include "service/ServiceLog.h"

#include <condition_variable>
#include <mutex>

using namespace Qt::StringLiterals;

/// The worker thread's work. The task is shared under the mutex; the library is used on that thread only.
class DeadlineLibrary::Worker final
{
public:
    using Task = std::move_only_function<void(ReadingLibrary&)>;

    explicit Worker(std::unique_ptr<ReadingLibrary> library)
        : m_library(std::move(library))
    {
    }

    /// The thread's function.
    void run()
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return m_task || m_isStopping; });
            if (!m_task)
                break;
            Task task = std::move(*m_task);
            lock.unlock();
            task(*m_library);
            task = {};
            clearUnusedStack();
            lock.lock();
            m_task.reset();
            m_changed.notify_all();
        }
        m_library.reset();
    }

    /// Whether the task was done in time.
    [[nodiscard]] bool perform(Task task, std::chrono::milliseconds limit)
    {
        std::unique_lock lock(m_mutex);
        m_task = std::move(task);
        m_changed.notify_all();
        return m_changed.wait_for(lock, limit, [this] { return !m_task; });
    }

    /// What the unfinished task is waiting for.
    [[nodiscard]] QString waitsFor() const { return m_library->waitsFor(); }

    void requestStop()
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<Task> m_task; // set until it is done
    bool m_isStopping = false;

    std::unique_ptr<ReadingLibrary> m_library; // until the stop
};

DeadlineLibrary::DeadlineLibrary(std::unique_ptr<ReadingLibrary> library, DeadlineLimits limits)
    : m_limits(limits)
    , m_worker(std::make_shared<Worker>(std::move(library)))
    , m_thread([worker = m_worker] { worker->run(); })
{
}

DeadlineLibrary::~DeadlineLibrary()
{
    m_worker->requestStop();
    if (m_isBeyondUse)
        m_thread.detach();
    else
        m_thread.join();
}

template <typename Answer>
Answer DeadlineLibrary::ask(std::chrono::milliseconds limit, Answer lateAnswer,
                            std::move_only_function<Answer(ReadingLibrary&)> question)
{
    if (m_isBeyondUse)
        return lateAnswer;
    // Shared with the task: an abandoned call still writes its answer.
    struct Place
    {
        std::optional<Answer> answer;
        QString hint;
    };
    const auto place = std::make_shared<Place>();
    const bool isInTime = m_worker->perform(
        [place, asked = std::move(question)](ReadingLibrary& library) mutable {
            place->answer.emplace(asked(library));
            place->hint = library.hint();
        },
        limit);
    m_isBeyondUse = !isInTime;
    m_hint = isInTime ? place->hint : QString();
    return isInTime ? std::move(*place->answer) : std::move(lateAnswer);
}

std::optional<LibraryKind> DeadlineLibrary::initialise(LibraryMode mode)
{
    return ask<std::optional<LibraryKind>>(m_limits.other, std::nullopt,
                                           [mode](ReadingLibrary& library) { return library.initialise(mode); });
}

QStringList DeadlineLibrary::readers()
{
    return ask<QStringList>(m_limits.other, {}, [](ReadingLibrary& library) { return library.readers(); });
}

bool DeadlineLibrary::chooseReaders(const QString& vitaleReader, const QString& professionalReader)
{
    return ask<bool>(m_limits.other, false, [vitaleReader, professionalReader](ReadingLibrary& library) {
        return library.chooseReaders(vitaleReader, professionalReader);
    });
}

QString DeadlineLibrary::informations()
{
    return ask<QString>(m_limits.other, {}, [](ReadingLibrary& library) { return library.informations(); });
}

std::expected<QString, ReadResult> DeadlineLibrary::readCard()
{
    const bool wasBeyondUse = m_isBeyondUse;
    const auto card =
        ask<std::expected<QString, ReadResult>>(m_limits.read, std::unexpected(ReadResult::CardMute),
                                                [](ReadingLibrary& library) { return library.readCard(); });
    if (wasBeyondUse || !m_isBeyondUse)
        return card;
    m_hint = m_worker->waitsFor();
    const QString reason = m_hint.isEmpty() ? u"la carte ne répond pas"_s : m_hint;
    logLine(u"lecture abandonnée après %1 s : %2"_s.arg(m_limits.read / std::chrono::seconds(1)).arg(reason));
    return m_hint.isEmpty() ? card : std::unexpected(ReadResult::ReaderFault);
}

std::unique_ptr<ReaderWatch> DeadlineLibrary::watchReader(const ReaderReport& report)
{
    return ask<std::unique_ptr<ReaderWatch>>(m_limits.other, nullptr,
                                             [report](ReadingLibrary& library) { return library.watchReader(report); });
}
