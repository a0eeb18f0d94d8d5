#pragma once

#include "support/move/MoveCommands.h"

/// The commands of a Linux desktop. What they start gets the arguments that this program was started with.
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
    /// The copy's program with its arguments, quoted for the shell.
    [[nodiscard]] QString programOf(const QString& bundle) const;

    QStringList m_programArguments;
};
