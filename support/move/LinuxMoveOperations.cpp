#include "support/move/LinuxMoveOperations.h"

#include "platform/SystemLog.h"
#include "platform/gui/QuestionAlert.h"
#include "support/move/FolderCopy.h"
#include "support/move/PortableBundle.h"
#include "support/move/RunningPrograms.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int untilItEnds = -1;
constexpr QLatin1StringView suppressionKey{"moveToApplicationsFolderAlertSuppress"};

int priorityOf(MoveOperations::LogLevel level)
{
    switch (level) {
    case MoveOperations::LogLevel::Info:
        return LOG_INFO;
    case MoveOperations::LogLevel::Warning:
        return LOG_WARNING;
    case MoveOperations::LogLevel::Error:
        break;
    }
    return LOG_ERR;
}

// QFile::moveToTrash makes the trash folder but not its parent, and without a trash it moves to the current folder.
bool hasTrash()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (!QDir::isAbsolutePath(folder) || !QDir().mkpath(folder))
        return false;
    QDir(folder).mkdir(u"Trash"_s, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return QFileInfo(folder + "/Trash"_L1).isDir();
}

// Whether the running program is the file in that open folder.
bool holdsThisProgram(const FileDescriptor& folder, const QString& path)
{
    constexpr auto thisProgram = "/proc/self/exe";
    const QString program = QFile::symLinkTarget(QLatin1StringView(thisProgram));
    if (!program.startsWith(path + u'/'))
        return false;
    const QByteArray inside = QFile::encodeName(program.sliced(path.size() + 1));
    struct stat running = {};
    struct stat found = {};
    return ::stat(thisProgram, &running) == 0 &&
           ::fstatat(folder.get(), inside.constData(), &found, AT_SYMLINK_NOFOLLOW) == 0 &&
           found.st_dev == running.st_dev && found.st_ino == running.st_ino;
}

} // namespace

LinuxMoveOperations::LinuxMoveOperations(UserDefaults& defaults)
    : m_defaults(defaults)
    , m_images(MountedImages::ofSystem())
{
}

bool LinuxMoveOperations::isQuestionSuppressed()
{
    return m_defaults.object(suppressionKey).toBool();
}

void LinuxMoveOperations::suppressQuestion()
{
    m_defaults.setObject(suppressionKey, true);
    m_defaults.synchronize();
}

MoveOperations::ItemFacts LinuxMoveOperations::factsOf(const QString& path)
{
    const QFileInfo item(path);
    return {item.exists(), item.isDir(), item.isWritable()};
}

QStringList LinuxMoveOperations::entriesOf(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

QString LinuxMoveOperations::resolvingSymbolicLinks(const QString& path)
{
    const QString resolved = QFileInfo(path).canonicalFilePath();
    return resolved.isEmpty() ? path : resolved;
}

std::optional<MoveOperations::Volume> LinuxMoveOperations::volumeOf(const QString& folder)
{
    return m_images.volumeOf(folder);
}

std::expected<void, QString> LinuxMoveOperations::copyItem(const QString& source, const QString& destination)
{
    return copyFolder(source, destination);
}

std::expected<void, QString> LinuxMoveOperations::removeItem(const QString& path)
{
    return removeFolder(path);
}

bool LinuxMoveOperations::trashItem(const QString& path)
{
    return hasTrash() && QFile::moveToTrash(path);
}

bool LinuxMoveOperations::recycleItem(const QString& name, const QString& parentFolder)
{
    // gio knows more kinds of trash than Qt.
    return run({u"gio"_s, {u"trash"_s, u"--"_s, parentFolder + u'/' + name}}) == 0;
}

QByteArray LinuxMoveOperations::mountedImages()
{
    return m_images.propertyList();
}

QStringList LinuxMoveOperations::runningBundles()
{
    QStringList bundles;
    const QList<RunningProgram> programs = runningPrograms();
    for (const RunningProgram& program : programs) {
        if (const std::optional<QString> bundle = bundleOfExecutable(program.executable))
            bundles.append(*bundle);
    }
    return bundles;
}

std::optional<int> LinuxMoveOperations::run(const MoveCommand& command)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(command.program, command.arguments);
    if (!process.waitForFinished(untilItEnds) || process.exitStatus() != QProcess::NormalExit)
        return std::nullopt;
    return process.exitCode();
}

void LinuxMoveOperations::start(const MoveCommand& command)
{
    // In a new session, so that closing the terminal does not end it.
    QProcess::startDetached(command.program, command.arguments);
}

bool LinuxMoveOperations::isApplicationActive()
{
    return ::isApplicationActive();
}

void LinuxMoveOperations::activateApplication()
{
    // The question's window is the first one: it comes to the front when it is shown.
    m_comesToTheFront = true;
}

MoveOperations::Answer LinuxMoveOperations::ask(const MoveQuestion& question)
{
    const QuestionAnswer answer =
        askQuestion({question.title, question.body, question.moveButton, question.stayButton, question.suppressionBox},
                    m_comesToTheFront);
    return {answer.isAccepted, answer.isSuppressionOn};
}

void LinuxMoveOperations::showAlert(const QString& title)
{
    ::showAlert(title);
}

std::optional<QString> LinuxMoveOperations::holdForAuthorized(const QString& bundle)
{
    m_heldBundle =
        FileDescriptor(::open(QFile::encodeName(bundle).constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!m_heldBundle.isValid() || !holdsThisProgram(m_heldBundle, bundle))
        return std::nullopt;
    return u"/proc/%1/fd/%2"_s.arg(::getpid()).arg(m_heldBundle.get());
}

MoveOperations::Right LinuxMoveOperations::requestRight()
{
    m_administrator = std::make_unique<Administrator>();
    return m_administrator->request();
}

std::optional<int> LinuxMoveOperations::runAuthorized(const MoveCommand& command)
{
    return m_administrator->run(QStringList(command.program) + command.arguments);
}

void LinuxMoveOperations::freeAuthorization()
{
    m_administrator.reset();
    m_heldBundle.reset();
}

void LinuxMoveOperations::log(LogLevel level, const QString& line)
{
    writeToSystemLog(priorityOf(level), line.toStdString());
}
