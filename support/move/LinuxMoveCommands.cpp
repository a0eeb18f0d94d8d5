#include "support/move/LinuxMoveCommands.h"

#include "support/move/ShellQuoting.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Paths in the arguments need no quotes; those in the text do.
MoveCommand inShell(const QString& text, const QStringList& arguments = {})
{
    return {u"/bin/sh"_s, QStringList{u"-c"_s, text} + arguments};
}

} // namespace

LinuxMoveCommands::LinuxMoveCommands(QStringList programArguments)
    : m_programArguments(std::move(programArguments))
{
}

MoveCommand LinuxMoveCommands::openRunningCopy(const QString& destination) const
{
    return inShell(programOf(destination) + " >/dev/null 2>&1 </dev/null &"_L1);
}

MoveCommand LinuxMoveCommands::relaunch(qint64 processIdentifier, const QString& destination) const
{
    // A zombie process has ended too.
    return inShell(u"(p=%1; while kill -0 $p && ! grep -q '^State:.*Z' /proc/$p/status; do sleep 0.1; done; "
                   "%2 --add-launcher; exec %3) >/dev/null 2>&1 </dev/null &"_s.arg(
                       QString::number(processIdentifier), quotedForShell(destination) + "/bin/pelmora"_L1,
                       programOf(destination)));
}

MoveCommand LinuxMoveCommands::ejectImage(const QString& device) const
{
    return inShell(
        u"(d=%1; sleep 5 && udisksctl unmount -b \"$d\" && udisksctl loop-delete -b \"$d\") >/dev/null 2>&1 &"_s.arg(
            quotedForShell(device)));
}

// The installed copy belongs to the administrator, every user can run it, and it appears complete: a rename comes last.
// The old copy is renamed before it is deleted. Temporary files are in a folder that only the administrator can enter,
// so that users can neither replace nor start them.
//
// copyFolder() and removeFolder() cannot be used: the administrator would have to run this program, which the user can
// change, and copyFolder() keeps permissions.

MoveCommand LinuxMoveCommands::privilegedDelete(const QString& destination) const
{
    return inShell(u"d=$(mktemp -d -- \"${0%/*}/.pelmora-administrator-XXXXXX\") && "
                   "mv -T -- \"$0\" \"$d/old\" 2>/dev/null; rm -rf -- \"${0%/*}\"/.pelmora-administrator-*"_s,
                   {destination});
}

MoveCommand LinuxMoveCommands::privilegedCopy(const QString& source, const QString& destination) const
{
    // tar, unlike cp, does not follow links in the path: it opens each folder from its parent.
    return inShell(u"rm -rf -- \"${1%/*}\"/.pelmora-administrator-*; umask 022; "
                   "d=$(mktemp -d -- \"${1%/*}/.pelmora-administrator-XXXXXX\") && mkdir -- \"$d/new\" && "
                   "tar --create --format=posix --one-file-system --directory=\"$0\" --file=\"$d/tar\" . && "
                   "tar --extract --no-same-owner --directory=\"$d/new\" --file=\"$d/tar\" && "
                   "chmod -R a-s,u+rwX,go+rX,go-w -- \"$d/new\" && sync -f -- \"$d/new\" && mv -T -- \"$d/new\" "
                   "\"$1\"; s=$?; rm -rf -- \"$d\"; exit $s"_s,
                   {source, destination});
}

QString LinuxMoveCommands::programOf(const QString& bundle) const
{
    QString words = quotedForShell(bundle) + "/bin/pelmora"_L1;
    for (const QString& argument : m_programArguments)
        words += u' ' + quotedForShell(argument);
    return words;
}
