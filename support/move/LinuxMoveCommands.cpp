#include "support/move/LinuxMoveCommands.h"

#include "support/move/ShellQuoting.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Paths that come as arguments reach the shell as they are; those within the text are to be quoted.
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
    // A process that has ended and waits for its parent to ask for it has ended all the same.
    return inShell(
        u"(p=%1; while kill -0 $p && ! grep -q '^State:.*Z' /proc/$p/status; do sleep 0.1; done; "
        "exec %2) >/dev/null 2>&1 </dev/null &"_s.arg(QString::number(processIdentifier), programOf(destination)));
}

MoveCommand LinuxMoveCommands::ejectImage(const QString& device) const
{
    return inShell(
        u"(d=%1; sleep 5 && udisksctl unmount -b \"$d\" && udisksctl loop-delete -b \"$d\") >/dev/null 2>&1 &"_s.arg(
            quotedForShell(device)));
}

// What an administrator installs belongs to the administrator, serves every user however private its source was, and
// appears whole: only a name changes last. What is replaced loses its name first, so that it is never there in part.
// All that is made on the way lies in a folder of an own name which is closed to others, so that they cannot put
// anything in its place, nor start a program that is still somebody else's.
//
// copyFolder() and removeFolder() cannot do this: an administrator would have to run the running copy, whose files its
// user may change, and copyFolder() keeps permissions. These commands cannot do copyFolder()'s work either: they give
// no reason for a failure, and change permissions.

MoveCommand LinuxMoveCommands::privilegedDelete(const QString& destination) const
{
    return inShell(u"d=$(mktemp -d -- \"${0%/*}/.pelmora-administrator-XXXXXX\") && "
                   "mv -T -- \"$0\" \"$d/old\" 2>/dev/null; rm -rf -- \"${0%/*}\"/.pelmora-administrator-*"_s,
                   {destination});
}

MoveCommand LinuxMoveCommands::privilegedCopy(const QString& source, const QString& destination) const
{
    // Links are not followed: tar, unlike cp, opens each folder from the one above it.
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
