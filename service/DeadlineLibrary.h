#pragma once

#include "service/ReadingLibrary.h"

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

/// How long a call to a reading library may last. Less than the client waits for a reply (ChannelLimits), so that the
/// client has one.
struct DeadlineLimits
{
    std::chrono::milliseconds read{20'000};
    std::chrono::milliseconds other{10'000};
};

/// A reading library whose calls end, whatever the reader does: each is made on one worker thread, and left behind once
/// its time is over. The call in question is then answered as a failure (a read as a mute card, or as a reader fault
/// when it waits for something else), and so is, at once, every later one. The library that it holds is used, closed
/// and destroyed on the worker thread.
class DeadlineLibrary final : public ReadingLibrary
{
public:
    explicit DeadlineLibrary(std::unique_ptr<ReadingLibrary> library, DeadlineLimits limits = {});
    DeadlineLibrary(const DeadlineLibrary&) = delete;
    DeadlineLibrary& operator=(const DeadlineLibrary&) = delete;
    /// Waits until the library is closed. When a call was left behind nothing is waited for: its thread goes on, and
    /// closes the library should the call ever return.
    ~DeadlineLibrary() override;

    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override;
    [[nodiscard]] QStringList readers() override;
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override;
    [[nodiscard]] QString informations() override;
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override;
    [[nodiscard]] QString hint() const override { return m_hint; }
    [[nodiscard]] bool isBeyondUse() const override { return m_isBeyondUse; }

private:
    class Worker;

    template <typename Answer>
    [[nodiscard]] Answer ask(std::chrono::milliseconds limit, Answer lateAnswer,
                             std::move_only_function<Answer(ReadingLibrary&)> question);

    DeadlineLimits m_limits;
    std::shared_ptr<Worker> m_worker; // also its thread's, which may outlive this
    std::thread m_thread;
    QString m_hint; // the library's, after its last call
    bool m_isBeyondUse = false;
};
