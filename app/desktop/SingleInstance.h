#pragma once

#include "app/desktop/InstanceMessage.h"
#include "platform/FileDescriptor.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <deque>
#include <memory>

class QSocketNotifier;
struct CommandLine;

/// One running application per user, desktop and card service: a later start passes its request on and ends. The first
/// one has a lock, which the kernel drops at its end, and a socket for requests. Main thread.
class SingleInstance final : public QObject
{
    Q_OBJECT

public:
    enum class Claim
    {
        /// This process is the first.
        First,
        /// The running instance has answered the request.
        AlreadyRunning,
        /// The running instance does not answer.
        NoAnswer
    };

    /// Time limit for the answer.
    static constexpr std::chrono::milliseconds defaultPatience{1500};

    /// The key of runs with the same desktop and card service.
    [[nodiscard]] static QString keyFor(const CommandLine& command);

    /// The error text of a start without an answer.
    [[nodiscard]] static QString noAnswerText();

    /// Uses the user's runtime folder. The key becomes part of a file name.
    explicit SingleInstance(const QString& key);
    /// Uses the given folder.
    SingleInstance(FileDescriptor folder, const QString& key, std::chrono::milliseconds patience = defaultPatience);
    Q_DISABLE_COPY(SingleInstance)
    /// Calls release().
    ~SingleInstance() override;

    /// Becomes the first instance or sends the message to it. The first instance returns at once; others wait for the
    /// answer, so it is called before any window is made. No application object is needed. Called once.
    [[nodiscard]] Claim claim(const InstanceMessage& message);

    /// Starts answering later starts. Needs the application object and a claim that was First.
    void startListening();

    /// Gives the claim up. Called at the end of the application's event loop at the latest.
    void release();

Q_SIGNALS:
    /// A later start without a card file.
    void reopenRequested();
    /// A later start with a card file (absolute path).
    void openRequested(const QString& path);
    /// A later start that asks for something.
    void actionRequested(DesktopAction action);

private:
    /// A connected client that has sent nothing yet.
    struct Guest
    {
        FileDescriptor socket;
        QSocketNotifier* notifier = nullptr;
    };

    [[nodiscard]] QString socketName() const;
    [[nodiscard]] bool takeLock();
    void openSocket();
    void welcomeGuests();
    void pauseWelcome();
    void hear(int socket);
    void dismiss(int socket);

    const FileDescriptor m_folder;
    const QString m_name;
    const std::chrono::milliseconds m_patience;
    FileDescriptor m_lock;
    FileDescriptor m_socket;
    std::unique_ptr<QSocketNotifier> m_socketNotifier;
    std::deque<Guest> m_guests;
};
