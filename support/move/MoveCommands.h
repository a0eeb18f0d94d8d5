#pragma once

#include "support/move/MoveOperations.h"

#include <array>

/// What a command of the table is for.
enum class MovePurpose
{
    ListMountedImages,
    TestRunning,
    OpenRunningCopy,
    Relaunch,
    /// Not a command by itself: what the relaunch command does to the copy before it starts.
    RemoveQuarantine,
    RemoveQuarantineBefore,
    EjectImage,
    PrivilegedDelete,
    PrivilegedCopy
};

/// One command: the program and its arguments, empty ones left out. A placeholder that is a word by itself takes a path
/// as it is; one within a word, which a shell reads, takes it quoted for the shell.
struct MoveCommandRow
{
    MovePurpose purpose = MovePurpose::ListMountedImages;
    std::array<QStringView, 6> words;
};

/// The commands of one platform; rows without words are none. A purpose may be missing: there, the platform's own
/// operation serves.
using MoveCommandTable = std::array<MoveCommandRow, 9>;

extern const MoveCommandTable macintoshCommands;
extern const MoveCommandTable linuxCommands;

/// The releases of the platform (integer part of the application kit's version) from which things are done otherwise.
namespace PlatformRelease {
/// The last release of 10.5: what came after is above it.
inline constexpr int lastOf10_5 = 949;
inline constexpr int firstOf10_8 = 1187;
} // namespace PlatformRelease

/// The commands of a table, with their values.
class MoveCommands
{
public:
    /// The arguments are those that the program was started with; a table may hand them on.
    MoveCommands(const MoveCommandTable& table, int platformRelease, QStringList programArguments = {});

    /// Nothing where the table has no such command.
    [[nodiscard]] std::optional<MoveCommand> listMountedImages() const;

    [[nodiscard]] MoveCommand testRunning(const QString& destination) const;
    [[nodiscard]] MoveCommand openRunningCopy(const QString& destination) const;
    [[nodiscard]] MoveCommand relaunch(qint64 processIdentifier, const QString& destination) const;
    [[nodiscard]] MoveCommand ejectImage(const QString& device) const;
    [[nodiscard]] MoveCommand privilegedDelete(const QString& destination) const;
    [[nodiscard]] MoveCommand privilegedCopy(const QString& source, const QString& destination) const;

private:
    struct Value
    {
        QString text;
        bool isPath;
    };

    [[nodiscard]] const MoveCommandRow* rowOf(MovePurpose purpose) const;
    [[nodiscard]] MoveCommand command(MovePurpose purpose, const QList<Value>& values) const;
    [[nodiscard]] Value programArguments() const;

    const MoveCommandTable& m_table;
    int m_platformRelease;
    QStringList m_programArguments;
};
