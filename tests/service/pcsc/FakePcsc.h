#pragma once

#include <QByteArray>
#include <QList>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

/// The PC/SC service of a test program. FakePcsc.cpp defines PC/SC's functions in place of the shared library.
/// Its calls wait, like PC/SC's, until the test changes something.
class FakePcsc final
{
public:
    // PC/SC's names for parts of a reader's state.
    static const unsigned long empty;
    static const unsigned long card;
    static const unsigned long mute;
    static const unsigned long inUse;
    static const unsigned long lost;

    /// The service of the running test; there is one at a time.
    [[nodiscard]] static FakePcsc& running();

    FakePcsc();
    FakePcsc(const FakePcsc&) = delete;
    FakePcsc& operator=(const FakePcsc&) = delete;
    ~FakePcsc();

    // Events.
    void setState(const QByteArray& reader, unsigned long state); // a new reader is plugged in
    void unplug(const QByteArray& reader);
    void stop();
    void start();
    void restart();
    /// Connects a reader between the next list and the call that waits.
    void plugInAfterList(const QByteArray& reader);

    /// Waits until a call waits without a time limit; false when none does within some seconds.
    [[nodiscard]] bool isWaitedFor();
    [[nodiscard]] int contexts();
    /// The number of attempts to connect.
    [[nodiscard]] int attempts();

    // The functions of PC/SC.
    long establish(long* context);
    long release(long context);
    long list(long context, char* names, unsigned long* size);
    struct State
    {
        QByteArray name;
        unsigned long current = 0;
        unsigned long event = 0;
    };
    long waitForChange(long context, unsigned long milliseconds, QList<State>& states);
    long cancel(long context);

private:
    struct Reader
    {
        QByteArray name;
        unsigned long state = 0;
    };

    [[nodiscard]] bool update(QList<State>& states, qsizetype readersBefore) const;
    void change();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    QList<Reader> m_readers;
    std::optional<QByteArray> m_late;
    QList<long> m_contexts;
    long m_lastContext = 0;
    long m_cancelled = 0;
    int m_attempts = 0;
    int m_waiting = 0;
    bool m_isUp = true;
};
