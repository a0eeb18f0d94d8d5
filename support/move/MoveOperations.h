#pragma once

#include <QStringList>

#include <expected>
#include <optional>

/// Facts about the running program and the machine.
struct MoveSurroundings
{
    /// The running copy, such as "/home/anne/Downloads/Pelmora.app".
    QString bundlePath;
    qint64 processIdentifier = 0;
    /// The Applications folders of the user and of the machine, existing or not.
    QStringList applicationsFolders;
    QString userApplicationsFolder;
    /// The machine's Applications folders that the copy can move to.
    QStringList localApplicationsFolders;
    QStringList downloadsFolders;
};

struct MoveCommand
{
    QString program;
    QStringList arguments;

    friend bool operator==(const MoveCommand&, const MoveCommand&) = default;
};

struct MoveQuestion
{
    QString title;
    QString body;
    QString moveButton;
    QString stayButton;
    QString suppressionBox;
};

/// What a move needs from the platform. Operations wait until they are done, unless they say otherwise. Main thread.
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
        QString device; ///< what it is mounted from, such as "/dev/loop0"
    };
    struct Answer
    {
        bool isMoveChosen;
        bool isSuppressionOn;
    };
    /// How the request for an administrator's rights ended.
    enum class Right
    {
        Granted,
        Cancelled, ///< the user closed the dialog
        Refused    ///< the user may not have these rights, or the system has no way to ask for them
    };
    enum class LogLevel
    {
        Info,
        Warning,
        Error
    };

    MoveOperations() = default;
    virtual ~MoveOperations() = default;
    Q_DISABLE_COPY(MoveOperations)

    // Whether the user does not want the question any more.
    [[nodiscard]] virtual bool isQuestionSuppressed() = 0;
    virtual void suppressQuestion() = 0;

    [[nodiscard]] virtual ItemFacts factsOf(const QString& path) = 0;
    [[nodiscard]] virtual QStringList entriesOf(const QString& folder) = 0;
    [[nodiscard]] virtual QString resolvingSymbolicLinks(const QString& path) = 0;
    /// Absent when it cannot be found out.
    [[nodiscard]] virtual std::optional<Volume> volumeOf(const QString& folder) = 0;

    // Whole folders. The failure is a text.
    [[nodiscard]] virtual std::expected<void, QString> copyItem(const QString& source, const QString& destination) = 0;
    [[nodiscard]] virtual std::expected<void, QString> removeItem(const QString& path) = 0;

    // Two ways to move to the trash.
    [[nodiscard]] virtual bool trashItem(const QString& path) = 0;
    [[nodiscard]] virtual bool recycleItem(const QString& name, const QString& parentFolder) = 0;

    /// The mounted disk images as a property list.
    [[nodiscard]] virtual QByteArray mountedImages() = 0;
    /// The bundle paths of the applications that run.
    [[nodiscard]] virtual QStringList runningBundles() = 0;
    /// The exit status; absent when the program could not be started or was ended by a signal.
    [[nodiscard]] virtual std::optional<int> run(const MoveCommand& command) = 0;
    /// Starts a command without waiting for it. It may outlive this program.
    virtual void start(const MoveCommand& command) = 0;

    [[nodiscard]] virtual bool isApplicationActive() = 0;
    virtual void activateApplication() = 0;
    [[nodiscard]] virtual Answer ask(const MoveQuestion& question) = 0;
    /// Shows a title and the default button.
    virtual void showAlert(const QString& title) = 0;

    /// A path to the running copy for privileged commands. It stays valid when the folder is replaced after this call,
    /// until the authorization is freed. Absent when the folder does not contain the running program.
    [[nodiscard]] virtual std::optional<QString> holdForAuthorized(const QString& bundle) = 0;
    [[nodiscard]] virtual Right requestRight() = 0;
    /// The exit status; absent when the command could not be run or was ended by a signal.
    [[nodiscard]] virtual std::optional<int> runAuthorized(const MoveCommand& command) = 0;
    virtual void freeAuthorization() = 0;

    /// Writes a line to the system log.
    virtual void log(LogLevel level, const QString& line) = 0;
};
