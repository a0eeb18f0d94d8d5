#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <expected>
#include <optional>

/// What is known of the running program and of the machine before anything is decided.
struct MoveSurroundings
{
    /// The folder of the running copy, as "/home/anne/Downloads/Pelmora.app".
    QString bundlePath;
    qint64 processIdentifier = 0;
    /// The Applications folders of all domains, those that do not exist included.
    QStringList applicationsFolders;
    QString userApplicationsFolder;
    /// The Applications folders of this machine, for all its users; none where there is none to move to.
    QStringList localApplicationsFolders;
    QStringList downloadsFolders;
};

/// A program and its arguments.
struct MoveCommand
{
    QString program;
    QStringList arguments;

    friend bool operator==(const MoveCommand&, const MoveCommand&) = default;
};

/// The question whether to move.
struct MoveQuestion
{
    QString title;
    QString body;
    QString moveButton;
    QString stayButton;
    QString suppressionBox;
};

/// What moving asks of the platform. Each operation waits until it is done, unless it says otherwise. Main thread.
class MoveOperations
{
public:
    struct ItemFacts
    {
        bool exists;
        bool isFolder;
        bool isWritable;
    };
    struct Volume
    {
        bool isRootFileSystem;
        QString device;
    };
    struct Answer
    {
        bool isMoveChosen;
        bool isSuppressionOn;
    };
    enum class Right
    {
        Granted,
        Cancelled,
        Refused
    };
    enum class LogLevel
    {
        Info,
        Warning,
        Error
    };

    MoveOperations() = default;
    virtual ~MoveOperations() = default;
    MoveOperations(const MoveOperations&) = delete;
    MoveOperations& operator=(const MoveOperations&) = delete;

    // The user's settings: whether the question is not to be asked any more.
    [[nodiscard]] virtual bool isQuestionSuppressed() = 0;
    virtual void suppressQuestion() = 0;

    // Facts of the file system.
    [[nodiscard]] virtual ItemFacts factsOf(const QString& path) = 0;
    [[nodiscard]] virtual QStringList entriesOf(const QString& folder) = 0;
    [[nodiscard]] virtual QString resolvingSymbolicLinks(const QString& path) = 0;
    /// The volume that a folder lies on; nothing when it cannot be told.
    [[nodiscard]] virtual std::optional<Volume> volumeOf(const QString& folder) = 0;

    // Files, whole folders. The failure is the reason.
    [[nodiscard]] virtual std::expected<void, QString> copyItem(const QString& source, const QString& destination) = 0;
    [[nodiscard]] virtual std::expected<void, QString> removeItem(const QString& path) = 0;

    // The trash, by two ways.
    [[nodiscard]] virtual bool trashItem(const QString& path) = 0;
    [[nodiscard]] virtual bool recycleItem(const QString& name, const QString& parentFolder) = 0;

    // Mounted images and processes.
    /// The mounted disk images as a property list.
    [[nodiscard]] virtual QByteArray mountedImages() = 0;
    /// The bundle paths of the applications that run.
    [[nodiscard]] virtual QStringList runningBundles() = 0;
    /// The exit status; absent when the program could not be started or did not end by itself.
    [[nodiscard]] virtual std::optional<int> run(const MoveCommand& command) = 0;
    /// Starts a command that outlives this program.
    virtual void start(const MoveCommand& command) = 0;

    // The user.
    [[nodiscard]] virtual bool isApplicationActive() = 0;
    virtual void activateApplication() = 0;
    [[nodiscard]] virtual Answer ask(const MoveQuestion& question) = 0;
    /// An alert with a title and the default button.
    virtual void showAlert(const QString& title) = 0;

    // An administrator's rights.
    /// A path by which commands with those rights find the running copy in that folder, whatever is put in the folder's
    /// place after this call, until the authorization is freed. Nothing when the running copy is not there (any more).
    [[nodiscard]] virtual std::optional<QString> holdForAuthorized(const QString& bundle) = 0;
    [[nodiscard]] virtual Right requestRight() = 0;
    /// The command's exit status; absent when it could not be run or did not end by itself.
    [[nodiscard]] virtual std::optional<int> runAuthorized(const MoveCommand& command) = 0;
    virtual void freeAuthorization() = 0;

    /// A line of the system log.
    virtual void log(LogLevel level, const QString& line) = 0;
};
