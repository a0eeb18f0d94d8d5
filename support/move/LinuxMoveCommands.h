#pragma once

#include "support/move/MoveCommands.h"

/// The commands on Linux. Started copies get the arguments of this program.
class LinuxMoveCommands final : public MoveCommands
{
public:
    explicit LinuxMoveCommands(QStringList programArguments = {});

    [[nodiscard]] MoveCommand openRunningCopy(const QString& destination) const override;
    [[nodiscard]] MoveCommand relaunch(qint64 processIdentifier, const QString& destination) const override;
    [[nodiscard]] MoveCommand ejectImage(const QString& device) const override;
    [[nodiscard]] MoveCommand privilegedDelete(const QString& destination) const override;
    [[nodiscard]] MoveCommand privilegedCopy(const QString& source, const QString& destination) const override;

private:
    /// The program in the bundle with its arguments, quoted for the shell.
    [[nodiscard]] QString programOf(const QString& bundle) const;

    QStringList m_programArguments;
};
