#pragma once

#include "support/move/MoveCommands.h"

#include <expected>

// The parts of the move to the Applications folder that are particular to the Macintosh, for a port to it. No
// program contains this code.

/// Releases of the platform (integer part of the application kit's version) that changed the move.
namespace MacintoshRelease {
/// The last release of 10.5.
inline constexpr int lastOf10_5 = 949;
inline constexpr int firstOf10_8 = 1187;
} // namespace MacintoshRelease

/// The right that the move requests when it needs an administrator.
inline constexpr QStringView administratorsRight{u"system.privilege.admin"};

/// The commands of that platform.
class MacintoshMoveCommands final : public MoveCommands
{
public:
    explicit MacintoshMoveCommands(int release);

    [[nodiscard]] MoveCommand openRunningCopy(const QString& destination) const override;
    [[nodiscard]] MoveCommand relaunch(qint64 processIdentifier, const QString& destination) const override;
    [[nodiscard]] MoveCommand ejectImage(const QString& device) const override;
    [[nodiscard]] MoveCommand privilegedDelete(const QString& destination) const override;
    [[nodiscard]] MoveCommand privilegedCopy(const QString& source, const QString& destination) const override;

    /// Prints the mounted disk images as a property list.
    [[nodiscard]] static MoveCommand listMountedImages();
    /// Exits with status 0 when the copy runs. Later releases than 10.5 list running applications and need no command.
    [[nodiscard]] std::optional<MoveCommand> testRunning(const QString& destination) const;

private:
    int m_release;
};

/// The platform's functions for moving to the trash.
class MacintoshTrash
{
public:
    MacintoshTrash() = default;
    virtual ~MacintoshTrash() = default;
    Q_DISABLE_COPY_MOVE(MacintoshTrash)

    [[nodiscard]] virtual bool trashItem(const QString& path) = 0;
    [[nodiscard]] virtual bool recycleItem(const QString& name, const QString& parentFolder) = 0;
    /// The reason when the script fails.
    [[nodiscard]] virtual std::expected<void, QString> runScript(const QStringList& lines) = 0;
    virtual void logError(const QString& line) = 0;
};

/// Moves an item to the trash by the first of three ways that succeeds. False, and two lines in the log, when all
/// fail.
[[nodiscard]] bool moveToMacintoshTrash(const QString& path, int release, MacintoshTrash& platform);
