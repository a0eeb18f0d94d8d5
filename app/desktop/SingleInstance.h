#pragma once

#include "app/desktop/InstanceMessage.h"
#include "platform/FileDescriptor.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <deque>
#include <memory>
#include <optional>

class QSocketNotifier;
struct CommandLine;

/// One running application per user, desktop and card service: a later start hands over to it and ends. The claim is a
/// lock that the kernel drops with its process, however that ends, so that nothing stale can be left behind; the word
/// is passed over a socket beside it. Neither needs a session bus. Main thread.
class SingleInstance final : public QObject
{
    Q_OBJECT

public:
    enum class Claim
    {
        /// Nobody was there: this process is the one.
        First,
        /// The running instance was told and has answered.
        AlreadyRunning,
        /// There is a running instance, but it does not answer.
        NoAnswer
    };

    /// How long a running instance may take to answer.
    static constexpr std::chrono::milliseconds defaultPatience{1500};

    /// What the command line's runs have in common: the desktop that they show on and the card service that they use.
    [[nodiscard]] static QString keyFor(const CommandLine& command);

    /// What a start says on the standard error that could not hand over.
    [[nodiscard]] static QString noAnswerText();

    /// In the user's runtime folder. The key is a part of a file name.
    explicit SingleInstance(const QString& key);
    /// In a folder of the caller's.
    SingleInstance(FileDescriptor folder, const QString& key, std::chrono::milliseconds patience = defaultPatience);
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;
    /// Does what release() does.
    ~SingleInstance() override;

    /// Becomes the instance, or tells the one that runs. Takes a fraction of a millisecond when it is the first; waits
    /// for an answer otherwise, so that it belongs before any window. Needs no application object. Once only.
    [[nodiscard]] Claim claim(const InstanceMessage& message);

    /// From now on later starts are answered; those that came meanwhile, too. Needs the application object and a claim
    /// that was the first.
    void startListening();

    /// Makes place: the next start is a first one. Done at the latest when the application's event loop ends.
    void release();

Q_SIGNALS:
    /// A later start without a card file: the window is to come back.
    void reopenRequested();
    /// A later start with a card file (its absolute path): it is to be shown.
    void openRequested(const QString& path);

private:
    /// A later start that is connected and has not spoken yet.
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
