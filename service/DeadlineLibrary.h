#pragma once

#include "service/DeadlineLimits.h"
#include "service/ReadingLibrary.h"

#include <functional>
#include <memory>
#include <thread>

/// Limits the time of calls to another reading library. Calls are made on one worker thread; a call that takes too long
/// is abandoned. It is then answered as a failure (a read as a mute card or, when it waits for something else, as a
/// reader fault), and so are all later calls. The other library is used, closed and destroyed on the worker thread.
class DeadlineLibrary final : public ReadingLibrary
{
public:
    explicit DeadlineLibrary(std::unique_ptr<ReadingLibrary> library, DeadlineLimits limits = {});
    DeadlineLibrary(const DeadlineLibrary&) = delete;
    DeadlineLibrary& operator=(const DeadlineLibrary&) = delete;
    /// Waits until the library is closed, unless a call was abandoned: then the thread is detached, and closes the
    /// library if the call returns.
    ~DeadlineLibrary() override;

    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override;
    [[nodiscard]] QStringList readers() override;
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override;
    [[nodiscard]] QString informations() override;
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override;
    [[nodiscard]] std::unique_ptr<ReaderWatch> watchReader(const ReaderReport& report) override;
    [[nodiscard]] QString hint() const override { return m_hint; }
    [[nodiscard]] bool isBeyondUse() const override { return m_isBeyondUse; }

private:
    class Worker;

    template <typename Answer>
    [[nodiscard]] Answer ask(std::chrono::milliseconds limit, Answer lateAnswer,
                             std::move_only_function<Answer(ReadingLibrary&)> question);

    DeadlineLimits m_limits;
    std::shared_ptr<Worker> m_worker; // shared with the thread, which may outlive this object
    std::thread m_thread;
    QString m_hint; // of the library after its last call
    bool m_isBeyondUse = false;
};
