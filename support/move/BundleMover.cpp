#include "support/move/BundleMover.h"

#include "support/move/FormatText.h"
#include "support/move/MoveTexts.h"
#include "support/move/MoveTrash.h"

#include <QDir>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

using LogLevel = MoveOperations::LogLevel;

// A path with this is read-only: macOS runs quarantined applications from there.
constexpr QStringView translocation{u"/AppTranslocation/"};

QString standardized(const QString& path)
{
    return QDir::cleanPath(path);
}

} // namespace

BundleMover::BundleMover(const MoveSurroundings& surroundings, const MoveDecision& decision,
                         const MoveCommands& commands, MoveOperations& operations)
    : m_surroundings(surroundings)
    , m_decision(decision)
    , m_commands(commands)
    , m_operations(operations)
{
}

BundleMover::End BundleMover::move()
{
    m_operations.log(LogLevel::Info, MoveLog::moving.toString());
    const End end = m_decision.needsAuthorization ? installWithAuthorization() : install();
    if (end != End::Moved)
        return end;

    const bool isOnDiskImage = m_decision.diskImageDevice.has_value();
    if (!m_decision.isNested && !isOnDiskImage)
        removeSource();
    m_operations.start(m_commands.relaunch(m_surroundings.processIdentifier, m_decision.destinationPath));
    if (!m_decision.isNested && isOnDiskImage)
        m_operations.start(m_commands.ejectImage(*m_decision.diskImageDevice));
    return End::Moved;
}

BundleMover::End BundleMover::install()
{
    const QString& source = m_surroundings.bundlePath;
    const QString& destination = m_decision.destinationPath;
    if (m_operations.factsOf(destination).exists) {
        if (isDestinationRunning()) {
            m_operations.log(LogLevel::Info, MoveLog::switching.toString());
            static_cast<void>(m_operations.run(m_commands.openRunningCopy(destination)));
            return End::Switched;
        }
        if (!moveToTrash(destination, m_operations))
            return End::Failed;
    }
    if (const std::expected<void, QString> copied = m_operations.copyItem(source, destination); !copied) {
        m_operations.log(LogLevel::Error, formattedText(MoveLog::copyFailure, {source, destination, copied.error()}));
        m_operations.log(LogLevel::Error, formattedText(MoveLog::notCopied, {destination}));
        return End::Failed;
    }
    return End::Moved;
}

BundleMover::End BundleMover::installWithAuthorization()
{
    const End end = arePathsFitForAuthorization() ? useAuthorization() : End::Failed;
    if (end == End::Failed)
        m_operations.log(LogLevel::Error, MoveLog::authorizedFailure.toString());
    return end;
}

BundleMover::End BundleMover::useAuthorization()
{
    // Before the user is asked, because the answer may take long.
    const std::optional<QString> source = m_operations.holdForAuthorized(m_surroundings.bundlePath);
    End end = End::Failed;
    switch (m_operations.requestRight()) {
    case MoveOperations::Right::Granted:
        end = source && runPrivilegedCommands(*source) ? End::Moved : End::Failed;
        break;
    case MoveOperations::Right::Cancelled:
        m_operations.log(LogLevel::Info, MoveLog::cancelled.toString());
        end = End::Cancelled;
        break;
    case MoveOperations::Right::Refused:
        break;
    }
    m_operations.freeAuthorization();
    return end;
}

bool BundleMover::runPrivilegedCommands(const QString& source)
{
    const QString& destination = m_decision.destinationPath;
    // The status of the first command is ignored: what could not be deleted makes the copy fail.
    if (!m_operations.runAuthorized(m_commands.privilegedDelete(destination)))
        return false;
    return m_operations.runAuthorized(m_commands.privilegedCopy(source, destination)) == 0;
}

bool BundleMover::isDestinationRunning()
{
    const QString& destination = m_decision.destinationPath;
    return std::ranges::any_of(m_operations.runningBundles(), [&destination](const QString& running) {
        return standardized(running) == standardized(destination);
    });
}

bool BundleMover::arePathsFitForAuthorization() const
{
    return m_decision.destinationPath.endsWith(".app"_L1) && !m_surroundings.bundlePath.trimmed().isEmpty();
}

void BundleMover::removeSource()
{
    const QString& source = m_surroundings.bundlePath;
    const std::expected<void, QString> removed = m_operations.removeItem(source);
    if (removed)
        return;
    if (!source.contains(translocation))
        m_operations.log(LogLevel::Warning, formattedText(MoveLog::notDeleted, {source, removed.error()}));
    if (!moveToTrash(source, m_operations))
        m_operations.log(LogLevel::Warning, MoveLog::sourceLeft.toString());
}
